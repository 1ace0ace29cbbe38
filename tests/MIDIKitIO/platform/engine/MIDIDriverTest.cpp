#include "MIDIKitIO/platform/engine/MIDIDriver.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>

#include <array>

#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"
#include "MIDIKitIO/platform/engine/MIDIServiceEngine.hpp"
#include "foundation/run/VirtualRuntime.hpp"

namespace midikit::io::engine {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Writes down what is reported to it, the wanted sources as they are at that moment.
class RecordingDriver final : public MIDIDriver {
 public:
  void attach(MIDIDriverHost& itsHost) override {
    host = &itsHost;
    reported_.emplace_back("attached");
  }
  void detach() override { reported_.emplace_back("detached"); }
  void clientAdded(const std::string& name) override { reported_.push_back("client " + name); }
  void ownEndpointAdded(MIDIObjectRef endpoint, MIDIObjectKind kind) override {
    reported_.push_back(fmt::format("added {} of kind {}", endpoint, static_cast<int>(kind)));
  }
  void ownEndpointRemoved(MIDIObjectRef endpoint) override {
    reported_.push_back(fmt::format("removed {}", endpoint));
  }
  void ownEndpointChanged(MIDIObjectRef endpoint, std::string_view key) override {
    reported_.push_back(
        fmt::format("{} is now {}", key,
                    host->text(endpoint, key).value_or(std::to_string(*host->number(endpoint, key)))));
  }
  void wantedSourcesChanged() override {
    reported_.push_back(fmt::format("wanted {}", fmt::join(host->wantedSources(), ", ")));
  }

  std::vector<std::string> reported() { return std::exchange(reported_, {}); }

  MIDIDriverHost* host = nullptr;

 private:
  std::vector<std::string> reported_;
};

TEST(MIDIDriverTest, ADriverHearsWhatTheProgramMakesSetsAndWantsToHear) {
  karvex::foundation::VirtualRuntime runtime;
  const auto driver = std::make_shared<RecordingDriver>();
  MIDIServiceEngine service(runtime, {13, 0}, std::make_shared<ThruConnectionStore>(), driver);
  MIDIObjectRef client = 0;
  MIDIObjectRef own = 0;
  MIDIObjectRef port = 0;
  EXPECT_EQ(service.MIDIClientCreateWithBlock("C", client, nullptr), noErr);
  driver->host->edit([](SetupEditor& editor) { editor.addDevice(simpleDevice("Desk")); });
  const auto desk = service.MIDIGetSource(0);
  EXPECT_THAT(driver->reported(), ElementsAre("attached", "client C"));

  EXPECT_EQ(service.MIDIDestinationCreateWithBlock(client, "D", own, nullptr), noErr);
  EXPECT_EQ(service.MIDIObjectSetStringProperty(own, kMIDIPropertyName, "E"), noErr);
  EXPECT_EQ(service.MIDIObjectSetIntegerProperty(own, kMIDIPropertyPrivate, 1), noErr);
  EXPECT_NE(service.MIDIObjectSetIntegerProperty(own, kMIDIPropertyName, 1), noErr);
  EXPECT_EQ(service.MIDIObjectSetStringProperty(desk, kMIDIPropertyName, "F"), noErr);
  EXPECT_THAT(driver->reported(), ElementsAre(fmt::format("added {} of kind 3", own), "wanted ",
                                              "name is now E", "private is now 1"));

  const auto wanted = fmt::format("wanted {}", desk);
  EXPECT_EQ(service.MIDIInputPortCreateWithBlock(client, "P", port, nullptr), noErr);
  EXPECT_EQ(service.MIDIPortConnectSource(port, desk, nullptr), noErr);
  EXPECT_THAT(driver->reported(), ElementsAre(wanted));
  EXPECT_EQ(service.MIDIPortDisconnectSource(port, desk), noErr);
  runtime.clock().sleepFor(MIDIServiceEngine::lingerTime - std::chrono::milliseconds(1));
  EXPECT_THAT(driver->reported(), IsEmpty()) << "it may be taken up again";
  runtime.clock().sleepFor(std::chrono::milliseconds(2));
  EXPECT_THAT(driver->reported(), ElementsAre("wanted "));
  EXPECT_EQ(service.MIDIPortConnectSource(port, desk, nullptr), noErr);
  EXPECT_EQ(service.MIDIPortDispose(port), noErr);
  EXPECT_THAT(driver->reported(), ElementsAre(wanted, "wanted "));

  EXPECT_EQ(service.MIDIEndpointDispose(own), noErr);
  service.close();
  service.close();
  EXPECT_THAT(driver->reported(), ElementsAre(fmt::format("removed {}", own), "wanted ", "detached"));
}

TEST(MIDIDriverTest, ADriverHearsWhatTheProgramSendsFromItsOwnSources) {
  karvex::foundation::VirtualRuntime runtime;
  const auto driver = std::make_shared<RecordingDriver>();
  MIDIServiceEngine service(runtime, {13, 0}, std::make_shared<ThruConnectionStore>(), driver);
  MIDIObjectRef client = 0;
  MIDIObjectRef own = 0;
  std::size_t heard = 0;
  EXPECT_EQ(service.MIDIClientCreateWithBlock("C", client, nullptr), noErr);
  EXPECT_EQ(service.MIDISourceCreate(client, "S", own), noErr);
  const MIDIReadBlock block = [&](const MIDIPacketList& list, ConnectionToken) {
    heard += list.packetCount();
  };
  karvex::foundation::SerialQueue queue(runtime.globalQueue());
  EXPECT_EQ(driver->host->listenAsEquipment(own, queue, block, ListReceiver::Manner::mayWait), noErr);
  MIDIPacketList list(100);
  ASSERT_TRUE(list.add(0, std::array<std::uint8_t, 1>{0xF8}));
  EXPECT_EQ(service.MIDIReceived(own, list), noErr);
  runtime.clock().sleepFor(std::chrono::milliseconds(1));
  EXPECT_EQ(heard, 1U);
}

TEST(MIDIDriverTest, AReaderThatNeverWaitsReadsAtOnceAndEachSendersStreamByItself) {
  karvex::foundation::VirtualRuntime runtime;
  const auto driver = std::make_shared<RecordingDriver>();
  MIDIServiceEngine service(runtime, {13, 0}, std::make_shared<ThruConnectionStore>(), driver);
  karvex::foundation::SerialQueue queue(runtime.globalQueue());
  std::vector<std::string> read;
  const MIDIReadBlock block = [&](const MIDIPacketList& list, ConnectionToken) {
    read.push_back(fmt::format("{:02X}", fmt::join(list.packet(0).bytes, " ")));
  };
  driver->host->edit([](SetupEditor& editor) { editor.addDevice(simpleDevice("Desk")); });
  const auto desk = service.MIDIGetDestination(0);
  driver->host->edit([&](SetupEditor& editor) {
    editor.setReader(desk,
                     std::make_shared<ListReceiver>(runtime, queue, block, ListReceiver::Manner::neverWaits));
  });
  MIDIObjectRef client = 0;
  std::array<MIDIObjectRef, 2> ports{};
  EXPECT_EQ(service.MIDIClientCreateWithBlock("C", client, nullptr), noErr);
  for (auto& port : ports) {
    EXPECT_EQ(service.MIDIOutputPortCreate(client, "P", port), noErr);
  }
  const auto send = [&](std::size_t port, std::initializer_list<std::uint8_t> bytes) {
    MIDIPacketList list(100);
    EXPECT_TRUE(list.add(0, std::vector(bytes)));
    EXPECT_EQ(service.MIDISend(ports.at(port), desk, list), noErr);
  };
  send(0, {0xF0, 0x41});
  send(1, {0xF0, 0x42});
  send(0, {0x43, 0xF7});
  send(0, {0xFE});
  send(1, {0x44, 0xF7});
  EXPECT_THAT(read, ElementsAre("F0 41 43 F7", "FE", "F0 42 44 F7"));
}

}  // namespace
}  // namespace midikit::io::engine
