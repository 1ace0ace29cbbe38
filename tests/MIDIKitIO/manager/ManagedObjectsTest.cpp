#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "MIDIKitIO/manager/ObservableMIDIManager.hpp"
#include "tests/MIDIKitIO/ManagerFixture.hpp"

namespace midikit::io {
namespace {

using karvex::rig::MIDIOperation;
using karvex::rig::simpleDevice;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

class ManagedObjectsTest : public ManagerFixture {
 protected:
  /// One of each kind, in an order of no importance.
  void addOneOfEach(const std::string& tag) {
    manager->addThruConnection({.tag = tag});
    manager->addOutput({.name = "out", .tag = tag});
    manager->addInput({.name = "in", .tag = tag, .receiver = writer()});
    manager->addOutputConnection({.mode = MIDIOutputConnectionMode::allInputs(), .tag = tag});
    manager->addInputConnection(
        {.mode = MIDIInputConnectionMode::allOutputs(), .tag = tag, .receiver = writer()});
  }
  /// How many there are of each kind, in the order of ManagedType.
  std::vector<std::size_t> counts() const {
    return {manager->managedInputConnections().size(), manager->managedOutputConnections().size(),
            manager->managedInputs().size(), manager->managedOutputs().size(),
            manager->managedThruConnections().size()};
  }
  /// What was freed on the platform since the last time: ports, endpoints, thru connections.
  std::vector<std::uint64_t> freed() {
    auto& calls = service->calls();
    const std::vector<std::uint64_t> numbers = {calls.count(MIDIOperation::portDispose),
                                                calls.count(MIDIOperation::endpointDispose),
                                                calls.count(MIDIOperation::thruConnectionDispose)};
    calls.resetCounts();
    return numbers;
  }
};

TEST_F(ManagedObjectsTest, RemovalTakesTheOneWithTheTagOrAllOfAKindAndNothingElse) {
  manager->removeAll();
  EXPECT_THAT(freed(), Each(0U)) << "nothing there is no error";
  addOneOfEach("a");
  addOneOfEach("b");
  manager->remove(ManagedType::input, TagSelection::withTag("no such tag"));
  EXPECT_THAT(freed(), Each(0U));
  std::vector<std::size_t> expected(allManagedTypes.size(), 2);
  for (const auto type : allManagedTypes) {
    manager->remove(type, TagSelection::withTag("a"));
    expected.at(static_cast<std::size_t>(type)) = 1;
    EXPECT_EQ(counts(), expected);
  }
  EXPECT_THAT(freed(), ElementsAre(2U, 2U, 1U));
  addOneOfEach("b");
  EXPECT_EQ(counts(), expected);
  EXPECT_THAT(freed(), ElementsAre(2U, 2U, 1U)) << "those that were replaced";
  manager->remove(ManagedType::input, TagSelection::all());
  EXPECT_THAT(counts(), ElementsAre(1U, 1U, 0U, 1U, 1U));
}

TEST_F(ManagedObjectsTest, EverythingIsRemovedInTheOrderOfTheKindsAndWithTheManager) {
  addOneOfEach("a");
  std::vector<std::vector<std::size_t>> left;
  const auto lookOnce = [&](MIDIOperation operation) {
    service->calls().interruptNext(operation, [&] { left.push_back(counts()); });
  };
  lookOnce(MIDIOperation::portDispose);
  lookOnce(MIDIOperation::endpointDispose);
  lookOnce(MIDIOperation::thruConnectionDispose);
  manager->removeAll();
  const std::vector<std::vector<std::size_t>> expected = {{1, 1, 1, 1, 1}, {0, 0, 1, 1, 1}, {0, 0, 0, 0, 1}};
  EXPECT_EQ(left, expected);
  addOneOfEach("b");
  const auto held = manager->managedOutputs();
  freed();
  manager.reset();
  EXPECT_THAT(freed(), ElementsAre(2U, 2U, 1U));
  EXPECT_EQ(held.at("b")->midiManager(), nullptr);
}

TEST_F(ManagedObjectsTest, RemovalWaitsForItsTurnOnTheEventQueue) {
  std::vector<std::string> order;
  addOneOfEach("a");
  manager->eventQueue()->post([&] {
    runtime.clock().sleepFor(std::chrono::milliseconds(5));
    order.emplace_back("a list is worked up");
  });
  service->calls().interruptNext(MIDIOperation::endpointDispose,
                                 [&] { order.emplace_back("the input goes"); });
  manager->remove(ManagedType::input, TagSelection::all());
  EXPECT_THAT(order, ElementsAre("a list is worked up", "the input goes"));
}

TEST_F(ManagedObjectsTest, AManagersOwnEndpointsAreLeftOutOfTheUnownedLists) {
  addSource("equipment", 21);
  addDestination("equipment", 22);
  addOneOfEach("own");
  service->calls().failNext(MIDIOperation::sourceCreateWithProtocol, -50);
  EXPECT_TRUE(errorOf([&] {
    manager->addOutput({.name = "of another direction",
                        .tag = "2",
                        .persistence = MIDIIdentifierPersistence::unmanaged(22)});
  }));
  settle();
  auto endpoints = manager->endpoints();
  EXPECT_THAT(namesOf(endpoints.inputs), ElementsAre("equipment", "in"));
  EXPECT_THAT(namesOf(endpoints.inputsUnowned), ElementsAre("equipment"));
  EXPECT_THAT(namesOf(endpoints.outputsUnowned), ElementsAre("equipment"));
  EXPECT_EQ(endpoints.manager.lock(), manager);
  manager.reset();
  endpoints.refresh(*service);
  EXPECT_EQ(endpoints.inputsUnowned.size(), endpoints.inputs.size()) << "nobody owns any any more";
}

TEST_F(ManagedObjectsTest, WhileAnEndpointIsMadeNobodyTakesItForAForeignOne) {
  const auto observable = ObservableMIDIManager::create(
      {.service = service, .runtime = runtime, .clientName = "client", .model = "m", .manufacturer = "f"});
  manager = observable;
  observable->start();
  std::vector<std::vector<std::string>> unowned;
  const auto observation = observable->observableEndpoints.observe([&](const MIDIEndpoints& now) {
    unowned.push_back(namesOf(now.outputsUnowned));
    unowned.push_back(namesOf(manager->endpoints().outputsUnowned));
  });
  auto receiver = writer();
  manager->addInputConnection({.mode = MIDIInputConnectionMode::allOutputs(),
                               .tag = "all",
                               .receiver = std::move(receiver),
                               .filter = {.owned = true}});
  const auto connection = manager->managedInputConnections().at("all");
  const struct {
    const char* description;
    MIDIIdentifierPersistence persistence;
    MIDIOperation moment;  ///< at which the notification thread gets its turn
  } rows[] = {
      {"its ID isn't read yet", MIDIIdentifierPersistence::adHoc(), MIDIOperation::objectSetStringProperty},
      {"its ID isn't set yet", MIDIIdentifierPersistence::unmanaged(7),
       MIDIOperation::objectSetIntegerProperty},
  };
  for (const auto& [description, persistence, moment] : rows) {
    SCOPED_TRACE(description);
    unowned.clear();
    std::size_t ownedThen = 0;
    service->calls().interruptNext(moment, [&] {
      runtime.globalQueue().post(
          [&] { ownedThen = manager->ownedUniqueIDs(MIDIEndpointType::output).size(); });
      runtime.clock().sleepFor(std::chrono::milliseconds(5));
      EXPECT_THAT(unowned, IsEmpty()) << "anyone who asks waits";
    });
    manager->addOutput({.name = "mine", .tag = "mine", .persistence = persistence});
    settle();
    EXPECT_EQ(ownedThen, 1U);
    EXPECT_THAT(unowned, Not(IsEmpty()));
    EXPECT_THAT(unowned, Each(IsEmpty()));
    EXPECT_THAT(connection->outputsCriteria(), IsEmpty());
    manager->remove(ManagedType::output, TagSelection::all());
    settle();
  }
}

TEST_F(ManagedObjectsTest, ARefreshThatAnEndpointCameIntoBeginsAgain) {
  // It has walked the destinations when the input comes, with another ID than the one that it is given.
  service->calls().interruptNext(MIDIOperation::getNumberOfSources, [&] {
    manager->addInput({.name = "mine",
                       .tag = "mine",
                       .persistence = MIDIIdentifierPersistence::unmanaged(7),
                       .receiver = writer()});
  });
  manager->refreshObjects();
  EXPECT_THAT(namesOf(manager->endpoints().inputs), ElementsAre("mine"));
  EXPECT_THAT(manager->endpoints().inputsUnowned, IsEmpty());
}

TEST_F(ManagedObjectsTest, ARefreshThatWasOvertakenDoesntBringOldListsBack) {
  service->calls().interruptNext(MIDIOperation::getNumberOfSources, [&] {
    service->addDevice(simpleDevice("device"));
    manager->refreshObjects();
    EXPECT_EQ(manager->endpoints().inputs.size(), 1U);
  });
  manager->refreshObjects();
  EXPECT_EQ(manager->endpoints().inputs.size(), 1U);
  EXPECT_EQ(manager->devices().devices.size(), 1U);
  service->removeDevice(service->MIDIGetDevice(0));
  manager->refreshObjects();
  EXPECT_THAT(manager->endpoints().inputs, IsEmpty());
}

}  // namespace
}  // namespace midikit::io
