#include "MIDIKitIO/manager/ManagedObjects.hpp"

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/MIDIKitIO/MIDITestBench.hpp"
#include "tests/MIDIKitIO/manager/FakeManaged.hpp"

namespace midikit::io {
namespace {

using Maps = ManagedObjects::Maps;
using karvex::rig::simpleDevice;
using testing::ElementsAre;
using testing::IsEmpty;

/// Lets something happen while the manager is in the middle of a refresh: it has read the platform's lists
/// and asks for the unique IDs of its own endpoints.
class InterruptingEndpoint final : public MIDIManagedEndpoint {
 public:
  InterruptingEndpoint(const std::shared_ptr<MIDIManager>& manager, std::function<void()> interruption)
      : MIDIManagedEndpoint(manager, CoreMIDIAPIVersion::legacyCoreMIDI()),
        interruption_(std::move(interruption)) {}

  std::optional<std::int32_t> uniqueID() const override {
    if (const auto interruption = std::exchange(interruption_, nullptr)) {
      interruption();
    }
    return std::nullopt;
  }

 private:
  mutable std::function<void()> interruption_;
};

class ManagedObjectsTest : public MIDITestBench {
 protected:
  std::shared_ptr<FakeConnection> connection(const std::string& name) {
    return std::make_shared<FakeConnection>(manager, name, story);
  }
  std::shared_ptr<FakeEndpoint> endpoint(const std::string& name,
                                         std::optional<std::int32_t> uniqueID = std::nullopt) {
    return std::make_shared<FakeEndpoint>(manager, name, story, uniqueID);
  }
  /// One of each kind, in an order of no importance.
  void putOneOfEach() {
    manager->put(&Maps::thruConnections, "tag", connection("thru"));
    manager->put(&Maps::outputs, "tag", endpoint("output"));
    manager->put(&Maps::inputs, "tag", endpoint("input"));
    manager->put(&Maps::outputConnections, "tag", connection("output connection"));
    manager->put(&Maps::inputConnections, "tag", connection("input connection"));
  }
  std::vector<std::string> told() { return std::exchange(told_, {}); }

  std::vector<std::string> told_;
  const Story story = [this](const std::string& what) { told_.push_back(what); };
  std::shared_ptr<HoldingManager> manager = HoldingManager::create(
      {.service = service, .runtime = runtime, .clientName = "client", .model = "m", .manufacturer = "f"});
};

TEST_F(ManagedObjectsTest, ATagInUseReplacesItsObjectWhichGoesAtOnce) {
  manager->put(&Maps::inputs, "tag", endpoint("first"));
  manager->put(&Maps::inputs, "other", endpoint("other"));
  manager->put(&Maps::outputs, "tag", endpoint("output"));
  EXPECT_THAT(told(), IsEmpty());
  manager->put(&Maps::inputs, "tag", endpoint("second"));
  EXPECT_THAT(told(), ElementsAre("first goes"));
  EXPECT_EQ(manager->managedInputs().size(), 2U);
}

TEST_F(ManagedObjectsTest, RemovalTakesTheOneWithTheTagOrAllOfAKindAndNothingElse) {
  for (const auto type : allManagedTypes) {
    EXPECT_NO_THROW(manager->remove(type, TagSelection::all())) << "nothing there";
  }
  putOneOfEach();
  manager->put(&Maps::inputs, "tag 2", endpoint("input 2"));
  manager->remove(ManagedType::input, TagSelection::withTag("no such tag"));
  EXPECT_THAT(told(), IsEmpty());
  const std::vector<std::pair<ManagedType, std::string>> kinds = {
      {ManagedType::inputConnection, "input connection goes"},
      {ManagedType::outputConnection, "output connection goes"},
      {ManagedType::input, "input goes"},
      {ManagedType::output, "output goes"},
      {ManagedType::nonPersistentThruConnection, "thru goes"}};
  for (const auto& [type, end] : kinds) {
    manager->remove(type, TagSelection::withTag("tag"));
    EXPECT_THAT(told(), ElementsAre(end));
  }
  manager->remove(ManagedType::input, TagSelection::all());
  EXPECT_THAT(told(), ElementsAre("input 2 goes"));
}

TEST_F(ManagedObjectsTest, EverythingIsRemovedInTheOrderOfTheKinds) {
  putOneOfEach();
  manager->removeAll();
  EXPECT_THAT(told(), ElementsAre("input connection goes", "output connection goes", "input goes",
                                  "output goes", "thru goes"));
  EXPECT_THAT(manager->managedInputConnections(), IsEmpty());
  EXPECT_THAT(manager->managedOutputConnections(), IsEmpty());
  EXPECT_THAT(manager->managedInputs(), IsEmpty());
  EXPECT_THAT(manager->managedOutputs(), IsEmpty());
  EXPECT_THAT(manager->managedThruConnections(), IsEmpty());
}

TEST_F(ManagedObjectsTest, ObjectsGoWithTheManagerAndFindItGone) {
  putOneOfEach();
  manager.reset();
  EXPECT_THAT(told(), ElementsAre("input connection goes after the manager",
                                  "output connection goes after the manager", "input goes after the manager",
                                  "output goes after the manager", "thru goes after the manager"));
}

TEST_F(ManagedObjectsTest, RemovalWaitsForItsTurnOnTheEventQueue) {
  manager->put(&Maps::inputs, "tag", endpoint("input"));
  manager->eventQueue()->post([this] {
    runtime.clock().sleepFor(std::chrono::milliseconds(5));
    told_.emplace_back("a list is worked up");
  });
  manager->remove(ManagedType::input, TagSelection::all());
  EXPECT_THAT(told(), ElementsAre("a list is worked up", "input goes"));
}

TEST_F(ManagedObjectsTest, ConnectionsFollowEachChangeWithTheNewListsAndWhateverOneThrows) {
  manager->start();
  putOneOfEach();
  manager->put(&Maps::outputConnections, "b", connection("b"));
  manager->put(&Maps::outputConnections, "a", connection("a"));
  service->notify({.messageID = 2});
  settle();
  EXPECT_THAT(told(), ElementsAre("a follows 1 at 0 devices", "b follows 1 at 0 devices",
                                  "output connection follows 1 at 0 devices",
                                  "input connection follows 1 at 0 devices", "thru follows 1 at 0 devices"))
      << "although there is no notification of this message";
  service->addDevice({.name = "device"});
  settle();
  EXPECT_EQ(told().front(), "a follows 1 at 1 devices");
}

TEST_F(ManagedObjectsTest, AManagersOwnEndpointsAreLeftOutOfTheUnownedLists) {
  auto description = simpleDevice("equipment");
  description.entities.at(0).sources.at(0).properties["uniqueID"] = 21;
  description.entities.at(0).destinations.at(0).properties["uniqueID"] = 22;
  service->addDevice(description);
  manager->start();
  manager->put(&Maps::inputs, "own", endpoint("own", 22));
  manager->put(&Maps::inputs, "without ID", endpoint("without ID"));
  manager->put(&Maps::outputs, "of another direction", endpoint("of another direction", 22));
  EXPECT_EQ(manager->endpoints().inputsUnowned.size(), 1U) << "not refreshed yet";
  manager->refreshObjects();
  auto endpoints = manager->endpoints();
  EXPECT_EQ(endpoints.inputs.size(), 1U);
  EXPECT_THAT(endpoints.inputsUnowned, IsEmpty());
  EXPECT_EQ(endpoints.outputsUnowned.size(), 1U);
  EXPECT_EQ(endpoints.manager.lock(), manager);
  manager.reset();
  endpoints.refresh(*service);
  EXPECT_EQ(endpoints.inputsUnowned.size(), 1U) << "nobody owns it any more";
}

TEST_F(ManagedObjectsTest, ARefreshThatWasOvertakenDoesntBringOldListsBack) {
  manager->put(&Maps::outputs, "tag", std::make_shared<InterruptingEndpoint>(manager, [this] {
    service->addDevice(simpleDevice("device"));
    manager->refreshObjects();
    EXPECT_EQ(manager->endpoints().inputs.size(), 1U);
  }));
  manager->refreshObjects();
  EXPECT_EQ(manager->endpoints().inputs.size(), 1U);
  EXPECT_EQ(manager->devices().devices.size(), 1U);
  service->removeDevice(service->MIDIGetDevice(0));
  manager->refreshObjects();
  EXPECT_THAT(manager->endpoints().inputs, IsEmpty());
}

TEST_F(ManagedObjectsTest, AnObjectUsesTheInterfaceThatThePlatformHas) {
  const auto newer = CoreMIDIAPIVersion::newCoreMIDI(core::MIDIProtocolVersion::midi1_0);
  EXPECT_EQ(FakeEndpoint(manager, "e", story, std::nullopt, newer).api(), newer);
  const auto old = HoldingManager::create({.service = serviceOf({10, 15}),
                                           .runtime = runtime,
                                           .clientName = "c",
                                           .model = "m",
                                           .manufacturer = "f"});
  EXPECT_EQ(FakeEndpoint(old, "e", story, std::nullopt, newer).api(), CoreMIDIAPIVersion::legacyCoreMIDI());
}

}  // namespace
}  // namespace midikit::io
