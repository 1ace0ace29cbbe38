#include <array>
#include <string>
#include <vector>

#include "MIDIKitIO/thru/MIDIThruConnectionProxy.hpp"
#include "tests/MIDIKitIO/ManagerFixture.hpp"

namespace midikit::io {
namespace {

using core::MIDIIOError;
using karvex::rig::MIDIOperation;
using testing::ElementsAre;
using testing::IsEmpty;
using Lifecycle = MIDIThruConnection::Lifecycle;

/// On each platform: what MIDI arrives at the equipment.
class ThruConnectionTest : public ManagerFixture, public testing::WithParamInterface<PlatformVersion> {
 protected:
  ThruConnectionTest() { startOn(GetParam()); }

  static bool isFaulty() {
    return GetParam() >= PlatformVersion{11, 0} && GetParam() < PlatformVersion{13, 0};
  }

  /// Equipment that is listened to.
  MIDIObjectRef addReader(const std::string& name, std::int32_t uniqueID) {
    const auto destination = addDestination(name, uniqueID);
    EXPECT_EQ(service->readAsEquipment(
                  destination, MIDIReadBlock([this, name](const MIDIPacketList& list, ConnectionToken) {
                    for (std::size_t index = 0; index < list.packetCount(); ++index) {
                      arrived_.push_back(name + ' ' + std::to_string(list.packet(index).bytes.size()));
                    }
                  })),
              noErr);
    return destination;
  }
  std::vector<std::string> arrived() {
    settle();
    return std::exchange(arrived_, {});
  }
  void addThru(const Lifecycle& lifecycle, MIDIThruConnection::Parameters parameters = {}) {
    manager->addThruConnection({.outputs = manager->endpoints().outputs,
                                .inputs = manager->endpoints().inputs,
                                .tag = "tag",
                                .lifecycle = lifecycle,
                                .parameters = parameters});
  }
  std::shared_ptr<MIDIThruConnection> thru() { return manager->managedThruConnections().at("tag"); }

 private:
  std::vector<std::string> arrived_;
};

TEST_P(ThruConnectionTest, ANonPersistentOneForwardsUntilItIsRemoved) {
  const auto source = addSource("keys", 1);
  addReader("synth", 11);
  addThru(Lifecycle::nonPersistent(), {.filterOutTuneRequest = true});
  play(source, 60);
  EXPECT_THAT(arrived(), ElementsAre("synth 3"));
  MIDIPacketList list(100);
  ASSERT_TRUE(list.add(0, std::vector<std::uint8_t>{0xF6}));
  ASSERT_EQ(service->sendFromEquipment(source, list), noErr);
  EXPECT_EQ(arrived().size(), isFaulty() ? 1U : 0U) << "a proxy has no parameters";

  const auto reference = thru()->coreMIDIThruConnectionRef();
  EXPECT_EQ(isFaulty(), thru()->proxy() != nullptr);
  EXPECT_EQ(isFaulty(), reference == 0U);
  EXPECT_EQ(thru()->description(),
            "MIDIThruConnection(ref: " + std::to_string(*reference) +
                ", outputs: [MIDIOutputEndpoint(name: \"keys\", uniqueID: 1)], inputs: "
                "[MIDIInputEndpoint(name: \"synth\", uniqueID: 11)], nonPersistent)");
  service->calls().resetCounts();
  const auto heldProxy = thru()->proxy();
  manager->remove(ManagedType::nonPersistentThruConnection, TagSelection::withTag("tag"));
  EXPECT_EQ(service->calls().count(MIDIOperation::thruConnectionDispose), 1U);
  EXPECT_EQ(service->calls().count(MIDIOperation::portDispose), isFaulty() ? 2U : 0U);
  play(source, 60);
  EXPECT_THAT(arrived(), IsEmpty()) << "although somebody holds the proxy";
  EXPECT_THAT(manager->managedThruConnections(), IsEmpty());
}

TEST_P(ThruConnectionTest, OfNineEndpointsEightCount) {
  std::vector<MIDIObjectRef> sources;
  for (std::int32_t number = 1; number <= 9; ++number) {
    sources.push_back(addSource("keys", number));
    addReader("synth", 10 + number);
  }
  addThru(Lifecycle::nonPersistent());
  EXPECT_EQ(thru()->outputs().size(), 8U);
  EXPECT_EQ(thru()->inputs().size(), 8U);
  play(sources.back(), 60);
  EXPECT_THAT(arrived(), IsEmpty());
  play(sources.front(), 60);
  EXPECT_EQ(arrived().size(), 8U);
}

TEST_P(ThruConnectionTest, APersistentOneOutlivesItsObjectOrIsRefused) {
  const auto source = addSource("keys", 1);
  addReader("synth", 11);
  const auto failure = errorOf([&] { addThru(Lifecycle::persistent("owner")); });
  EXPECT_EQ(failure,
            isFaulty()
                ? std::optional(MIDIIOError::notSupported(
                      "Persistent MIDI Thru Connections cannot be created on macOS 11 & 12 and iOS 14 & 15 "
                      "due to a Core MIDI bug. Consider using a non-persistent thru connection instead."))
                : std::nullopt);
  EXPECT_THAT(manager->managedThruConnections(), IsEmpty());
  manager->removeAll();
  play(source, 60);
  EXPECT_EQ(arrived().size(), isFaulty() ? 0U : 1U);
  EXPECT_EQ(Lifecycle::persistent("owner").description(), "persistent(owner)");

  EXPECT_THAT(manager->persistentThruConnections("nobody"), IsEmpty());
  EXPECT_EQ(manager->persistentThruConnections("owner").size(), isFaulty() ? 0U : 1U);
  if (!isFaulty()) {
    addThru(Lifecycle::persistent("owner"));
    service->calls().failNext(MIDIOperation::thruConnectionDispose, -50);
    EXPECT_EQ(manager->disposePersistentThruConnections("owner"), 1U) << "one failed";
    EXPECT_EQ(manager->disposePersistentThruConnections("owner"), 1U);
  }
  EXPECT_EQ(manager->disposePersistentThruConnections("owner"), 0U);
  service->calls().failNext(MIDIOperation::thruConnectionFind, -50);
  EXPECT_EQ(errorOf([&] { manager->persistentThruConnections("owner"); }), MIDIIOError::osStatus(-50));
}

TEST_P(ThruConnectionTest, AFailureLeavesNothingBehindAndAProxyFollowsWithBothConnections) {
  const auto source = addSource("keys", 1);
  addReader("synth", 11);
  service->calls().failNext(MIDIOperation::thruConnectionCreate, -50);
  service->calls().failNext(MIDIOperation::inputPortCreateWithProtocol, -50);
  EXPECT_EQ(errorOf([&] { addThru(Lifecycle::nonPersistent()); }), MIDIIOError::osStatus(-50));
  EXPECT_EQ(thru()->coreMIDIThruConnectionRef(), std::nullopt);
  EXPECT_EQ(service->calls().count(MIDIOperation::portDispose), isFaulty() ? 1U : 0U);
  service->calls().clearFailures();
  if (!isFaulty()) {
    return;
  }
  addThru(Lifecycle::nonPersistent());
  removeDeviceOf(source);
  removeDeviceOf(*findDestination(*service, 11));
  addReader("synth", 11);
  play(addSource("keys", 1), 60);
  EXPECT_THAT(arrived(), ElementsAre("synth 3"));

  const auto proxy = thru()->proxy();
  EXPECT_EQ(proxy->inputConnection()->api(), thru()->api());
  proxy->inputConnection()->dispose();  // From now on it fails to follow.
  removeDeviceOf(*findDestination(*service, 11));
  EXPECT_THAT(proxy->outputConnection()->coreMIDIInputEndpointRefs(), IsEmpty());
}

TEST_P(ThruConnectionTest, WhatIsSentHasTheFormOfTheInterfaceThatThePlatformHas) {
  const auto newest = CoreMIDIAPIVersion::newCoreMIDI(core::MIDIProtocolVersion::midi2_0);
  for (const auto wanted : {newest, CoreMIDIAPIVersion::legacyCoreMIDI()}) {
    const auto expected = GetParam() < PlatformVersion{11, 0} ? CoreMIDIAPIVersion::legacyCoreMIDI() : wanted;
    manager->setPreferredAPI(wanted);
    manager->addOutput({.name = "out", .tag = "tag"});
    manager->addOutputConnection({.mode = MIDIOutputConnectionMode::allInputs(), .tag = "tag"});
    const auto output = manager->managedOutputs().at("tag");
    const auto connection = manager->managedOutputConnections().at("tag");
    EXPECT_EQ(output->api(), expected);
    EXPECT_EQ(connection->api(), expected);
    for (internal::MessageSender* sender : {static_cast<internal::MessageSender*>(output.get()),
                                            static_cast<internal::MessageSender*>(connection.get())}) {
      const bool takesBytes = !errorOf([&] { sender->sendRawMessages({}); });
      const bool takesWords = !errorOf([&] { sender->sendUniversalWords(std::array{0x10F80000U}); });
      EXPECT_EQ(takesBytes, expected != newest);
      EXPECT_EQ(takesWords, expected == newest);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Platforms, ThruConnectionTest,
                         testing::Values(PlatformVersion{10, 15}, PlatformVersion{11, 0},
                                         PlatformVersion{12, 7}, PlatformVersion{13, 0}),
                         [](const auto& platform) {
                           return std::string("Platform").append(std::to_string(platform.param.major));
                         });

}  // namespace
}  // namespace midikit::io
