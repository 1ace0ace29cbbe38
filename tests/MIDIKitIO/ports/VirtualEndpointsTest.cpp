#include <optional>
#include <string>
#include <vector>

#include "MIDIKitIO/objects/PropertyAccess.hpp"
#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"
#include "tests/MIDIKitIO/ManagerFixture.hpp"

namespace midikit::io {
namespace {

using core::MIDIIOError;
using karvex::rig::MIDIOperation;
using Persistence = MIDIIdentifierPersistence;
using testing::ElementsAre;
using testing::IsEmpty;

/// User defaults in memory, with one value.
class OneDefault final : public karvex::foundation::UserDefaults {
 public:
  std::optional<std::int64_t> integer(std::string_view /*key*/) const override { return value; }
  void setInteger(std::string_view /*key*/, std::optional<std::int64_t> stored) override { value = stored; }

  std::optional<std::int64_t> value;
};

class VirtualEndpointsTest : public ManagerFixture {
 protected:
  void addInput(Persistence persistence = Persistence::adHoc()) {
    manager->addInput(
        {.name = "in", .tag = "tag", .persistence = std::move(persistence), .receiver = writer()});
  }
  void addOutput(Persistence persistence = Persistence::adHoc()) {
    manager->addOutput({.name = "out", .tag = "tag", .persistence = std::move(persistence)});
  }
  std::shared_ptr<MIDIInput> input() { return manager->managedInputs().at("tag"); }
  std::shared_ptr<MIDIOutput> output() { return manager->managedOutputs().at("tag"); }
};

TEST_F(VirtualEndpointsTest, AnEndpointStandsOnTheSystemAsTheProgramDescribesIt) {
  addInput(Persistence::unmanaged(7));
  addOutput();
  const auto destination = input()->endpoint();
  EXPECT_EQ(destination.name, "in");
  EXPECT_EQ(destination.uniqueID, 7);
  EXPECT_EQ(textProperty(*service, destination.coreMIDIObjectRef, kMIDIPropertyModel), "m");
  EXPECT_EQ(textProperty(*service, destination.coreMIDIObjectRef, kMIDIPropertyManufacturer), "f");
  EXPECT_EQ(output()->endpoint().coreMIDIObjectRef, findSource(*service, *output()->uniqueID()));
  EXPECT_EQ(input()->description(), "MIDIInput(name: \"in\", uniqueID: 7)");
  input()->setName("other");
  input()->setPrivate(true);
  EXPECT_EQ(input()->endpoint().name, "other");
  EXPECT_EQ(integerProperty(*service, destination.coreMIDIObjectRef, kMIDIPropertyPrivate), 1);
  service->calls().failNext(MIDIOperation::objectSetIntegerProperty, -10844);
  EXPECT_EQ(errorOf([&] { input()->setPrivate(false); }), MIDIIOError::osStatus(-10844));
}

TEST_F(VirtualEndpointsTest, ARenameWhileTheEndpointIsMadeReachesThePlatform) {
  service->calls().interruptNext(MIDIOperation::destinationCreateWithProtocol,
                                 [this] { input()->setName("other"); });
  addInput();
  EXPECT_EQ(input()->endpoint().name, "other");
}

TEST_F(VirtualEndpointsTest, TheUniqueIDIsTheKeptOneUnlessItIsTaken) {
  addDestination("equipment", 5);
  const auto defaults = std::make_shared<OneDefault>();
  std::vector<std::optional<std::int32_t>> stored;
  const auto handlers = [&](std::optional<std::int32_t> kept) {
    return Persistence::managedStorage([kept] { return kept; },
                                       [&stored](std::optional<std::int32_t> id) { stored.push_back(id); });
  };
  const struct {
    const char* description;
    Persistence persistence;
    std::optional<std::int64_t> inDefaults;
    std::optional<std::int32_t> expected;  ///< none for one that the platform assigns
  } rows[] = {
      {"ad hoc", Persistence::adHoc(), {}, {}},
      {"fixed", Persistence::unmanaged(42), {}, 42},
      {"fixed and taken", Persistence::unmanaged(5), {}, {}},
      {"user defaults without the key", Persistence::userDefaultsManaged("k", defaults), {}, {}},
      {"user defaults", Persistence::userDefaultsManaged("k", defaults), -43, -43},
      {"user defaults beyond 32 bits", Persistence::userDefaultsManaged("k", defaults), 1LL << 32, {}},
      {"user defaults with what is taken", Persistence::userDefaultsManaged("k", defaults), 5, {}},
      {"handlers", handlers(44), {}, 44},
      {"handlers without an ID", handlers({}), {}, {}},
      {"no handlers", Persistence::managedStorage(nullptr, nullptr), {}, {}},
  };
  for (const auto& [description, persistence, inDefaults, expected] : rows) {
    SCOPED_TRACE(description);
    defaults->value = inDefaults;
    stored.clear();
    addInput(persistence);
    const auto uniqueID = input()->endpoint().uniqueID;
    EXPECT_EQ(input()->uniqueID(), uniqueID);
    EXPECT_TRUE(expected ? uniqueID == *expected : uniqueID != 5 && uniqueID != 0) << uniqueID;
    const auto kind = persistence.asCase().index();
    EXPECT_EQ(defaults->value, kind == 1 ? std::optional<std::int64_t>(uniqueID) : inDefaults);
    EXPECT_TRUE(stored.empty() || stored == std::vector{std::optional(uniqueID)});
    const auto reader = input();  // Holding the object doesn't hold its ID.
    addInput(persistence);
    EXPECT_TRUE(!expected || input()->uniqueID() == *expected) << "the one before is off the platform";
    EXPECT_EQ(reader->coreMIDIInputPortRef(), std::nullopt);
    EXPECT_EQ(namesOf(systemDestinations(*service)), (std::vector<std::string>{"equipment", "in"}));
  }
}

TEST_F(VirtualEndpointsTest, AFailureReachesTheCallerAndLeavesTheObjectUnderItsTag) {
  const struct {
    const char* description;
    PlatformVersion platform;
    MIDIOperation failing;
    bool isThere;  ///< on the platform afterwards
  } rows[] = {
      {"newer interface", {13, 0}, MIDIOperation::destinationCreateWithProtocol, false},
      {"older interface", {10, 15}, MIDIOperation::destinationCreateWithBlock, false},
      {"the unique ID can't be set", {13, 0}, MIDIOperation::objectSetIntegerProperty, true},
  };
  for (const auto& [description, platform, failing, isThere] : rows) {
    SCOPED_TRACE(description);
    startOn(platform);
    service->calls().failNext(failing, -50);
    EXPECT_EQ(errorOf([&] { addInput(Persistence::unmanaged(7)); }), MIDIIOError::osStatus(-50));
    EXPECT_EQ(input()->coreMIDIInputPortRef().has_value(), isThere);
    EXPECT_TRUE(isThere || errorOf([&] { input()->setPrivate(true); }));
  }
  addDestination("equipment", 5);
  service->calls().failNext(MIDIOperation::destinationCreateWithProtocol, -50);
  EXPECT_TRUE(errorOf([&] { addInput(Persistence::unmanaged(5)); }));
  EXPECT_EQ(input()->uniqueID(), std::nullopt) << "it is another endpoint's";
  addInput();
  EXPECT_NE(input()->endpoint().uniqueID, 0) << "the next one takes the place";

  service->calls().interruptNext(MIDIOperation::sourceCreateWithProtocol, [&] { output()->dispose(); });
  EXPECT_EQ(errorOf([&] { addOutput(Persistence::unmanaged(9)); }),
            MIDIIOError::connectionError("Could not read virtual MIDI endpoint unique ID."));
  EXPECT_THAT(systemSources(*service), IsEmpty()) << "it was disposed while it was made";
  EXPECT_EQ(output()->description(), "MIDIOutput(name: \"out\", uniqueID: nil)");
  EXPECT_EQ(errorOf([&] { output()->sendPacketList(MIDIPacketList(100)); }),
            MIDIIOError::internalInconsistency("Port reference is nil."));
  EXPECT_EQ(errorOf([&] { output()->sendEventList({}); }),
            MIDIIOError::internalInconsistency("Port reference is nil."));
}

TEST_F(VirtualEndpointsTest, PacketsReachTheHandlerWithoutASourceAndNotWhenItHasGone) {
  addInput();
  const auto in = input();
  settle();
  manager->addOutputConnection(
      {.mode = MIDIOutputConnectionMode::inputs({uniqueID(*in->uniqueID())}), .tag = "to the input"});
  const auto sender = manager->managedOutputConnections().at("to the input");
  const auto note = core::MIDIEvent::timingClock();
  sender->sendEvent(note);
  EXPECT_THAT(received(), testing::SizeIs(1));
  manager->eventQueue()->post([&] { runtime.clock().sleepFor(std::chrono::milliseconds(5)); });
  sender->sendEvent(note);
  settle();
  service->calls().resetCounts();
  in->dispose();
  EXPECT_EQ(in->receiveHandler(), nullptr);
  in->dispose();
  manager->remove(ManagedType::input, TagSelection::all());
  EXPECT_THAT(received(), IsEmpty()) << "it waited on eventQueue";
  EXPECT_EQ(service->calls().count(MIDIOperation::endpointDispose), 1U) << "once is enough";
}

}  // namespace
}  // namespace midikit::io
