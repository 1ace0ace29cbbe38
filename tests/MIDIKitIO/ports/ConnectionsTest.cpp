#include <functional>
#include <set>
#include <string>
#include <vector>

#include "tests/MIDIKitIO/ManagerFixture.hpp"

namespace midikit::io {
namespace {

using core::MIDIIOError;
using karvex::rig::MIDIOperation;
using testing::ElementsAre;
using testing::IsEmpty;

class ConnectionsTest : public ManagerFixture {
 protected:
  void addInputConnection(MIDIInputConnectionMode mode, const MIDIEndpointFilter& filter = {}) {
    auto receiver = writer();
    manager->addInputConnection(
        {.mode = std::move(mode), .tag = "tag", .receiver = std::move(receiver), .filter = filter});
  }
  void addOutputConnection(MIDIOutputConnectionMode mode, const MIDIEndpointFilter& filter = {}) {
    manager->addOutputConnection({.mode = std::move(mode), .tag = "tag", .filter = filter});
  }
  std::shared_ptr<MIDIInputConnection> listening() { return manager->managedInputConnections().at("tag"); }
  std::shared_ptr<MIDIOutputConnection> sending() { return manager->managedOutputConnections().at("tag"); }
  std::vector<std::string> heard() { return namesOf(listening()->endpoints()); }
  std::vector<std::string> reached() { return namesOf(sending()->endpoints()); }
};

TEST_F(ConnectionsTest, AConnectionFollowsWhatItsCriteriaMean) {
  addInputConnection(MIDIInputConnectionMode::outputs({uniqueID(1), MIDIEndpointIdentity::name("two")}));
  addOutputConnection(MIDIOutputConnectionMode::inputs({uniqueID(11)}));
  EXPECT_THAT(heard(), IsEmpty());
  const auto one = addSource("one", 1);
  const auto two = addSource("two", 2);
  addSource("three", 3);
  const auto eleven = addDestination("eleven", 11);
  EXPECT_THAT(heard(), ElementsAre("one", "two"));
  EXPECT_THAT(reached(), ElementsAre("eleven"));
  play(one, 60);
  play(two, 61);
  EXPECT_THAT(received(), ElementsAre(testing::StartsWith("one: "), testing::StartsWith("two: ")));

  EXPECT_EQ(listening()->description(),
            "MIDIInputConnection(criteria: [Endpoint Name: \"two\", UniqueID: 1], outputEndpointRefs: [" +
                std::to_string(one) + ", " + std::to_string(two) +
                "], inputPortRef: " + std::to_string(*listening()->coreMIDIInputPortRef()) + ")");
  EXPECT_EQ(sending()->description(),
            "MIDIOutputConnection(criteria: [UniqueID: 11], inputEndpointRefs: [" + std::to_string(eleven) +
                "], outputPortRef: " + std::to_string(*sending()->coreMIDIOutputPortRef()) + ")");
  removeDeviceOf(two);
  EXPECT_THAT(heard(), ElementsAre("one"));
  addSource("two", 22);
  EXPECT_THAT(heard(), ElementsAre("one", "two"));

  const struct {
    const char* description;
    std::function<void()> change;
    std::vector<std::string> heard;
  } rows[] = {
      {"a criterion that matches", [&] { listening()->addOutputs({uniqueID(3)}); }, {"one", "three", "two"}},
      {"one that matches later", [&] { listening()->addOutputs({uniqueID(4)}); }, {"one", "three", "two"}},
      {"it has come up", [&] { addSource("four", 4); }, {"one", "three", "two", "four"}},
      {"an endpoint by its unique ID",
       [&] { listening()->removeOutputs(std::vector{makeOutputEndpoint(*service, one)}); },
       {"three", "two", "four"}},
      {"an identity of another case",
       [&] { listening()->removeOutputs({uniqueID(22)}); },
       {"three", "two", "four"}},
      {"all", [&] { listening()->removeAllOutputs(); }, {}},
      {"endpoints",
       [&] { listening()->addOutputs(std::vector{makeOutputEndpoint(*service, one)}); },
       {"one"}},
  };
  for (const auto& row : rows) {
    row.change();
    EXPECT_EQ(heard(), row.heard) << row.description;
  }
  sending()->addInputs(std::vector{MIDIInputEndpoint{.uniqueID = 12}});
  addDestination("twelve", 12);
  sending()->removeInputs({uniqueID(11)});
  EXPECT_THAT(reached(), ElementsAre("twelve"));
  sending()->removeAllInputs();
  EXPECT_THAT(reached(), IsEmpty());
  EXPECT_NO_THROW(sending()->sendEvent(core::MIDIEvent::timingClock()));
}

TEST_F(ConnectionsTest, WhatComesWhileAConnectionIsMadeIsConnectedToo) {
  addSource("one", 1);
  // The sources are counted by then.
  service->calls().interruptNext(MIDIOperation::objectGetIntegerProperty, [this] { addSource("two", 2); });
  addInputConnection(MIDIInputConnectionMode::allOutputs());
  EXPECT_THAT(heard(), ElementsAre("one", "two"));
}

TEST_F(ConnectionsTest, AFilterDropsIdentitiesNotEndpointsAndTheOwnOnesOfTheOtherDirection) {
  addSource("one", 1);
  addSource("two", 2);
  manager->addOutput({.name = "mine", .tag = "mine", .persistence = MIDIIdentifierPersistence::unmanaged(3)});
  service->calls().failNext(MIDIOperation::destinationCreateWithProtocol, -50);
  EXPECT_TRUE(errorOf([&] {
    manager->addInput({.name = "of the other direction",
                       .tag = "in",
                       .persistence = MIDIIdentifierPersistence::unmanaged(2),
                       .receiver = writer()});
  }));
  settle();
  const auto all = MIDIInputConnectionMode::allOutputs();
  const auto fixed = MIDIInputConnectionMode::outputs;
  const auto byName = MIDIEndpointIdentity::name("mine");
  const struct {
    const char* description;
    MIDIInputConnectionMode mode;
    std::vector<std::string> heard;
    MIDIEndpointFilter filter;
  } rows[] = {
      {"all", all, {"one", "two", "mine", "later", "mine too"}, {}},
      {"all but the own outputs", all, {"one", "two", "later"}, {true, {}}},
      {"all but an identity", all, {"two", "mine", "later", "mine too"}, {false, {uniqueID(1)}}},
      {"all but an identity that none of them is",
       all,
       {"one", "two", "mine", "later", "mine too"},
       {false, {MIDIEndpointIdentity::name("one")}}},
      {"own ones by another identity", fixed({byName, uniqueID(3)}), {"mine"}, {true, {}}},
      {"nothing left", fixed({byName}), {}, {true, {byName}}},
  };
  for (const auto& [description, mode, heardByNow, filter] : rows) {
    addInputConnection(mode, filter);
    const auto later = addSource("later", 4);
    manager->addOutput({.name = "mine too", .tag = "mine too"});
    settle();
    EXPECT_EQ(heard(), heardByNow) << description;
    manager->remove(ManagedType::output, TagSelection::withTag("mine too"));
    removeDeviceOf(later);
  }
  addDestination("keys", 11);
  addOutputConnection(MIDIOutputConnectionMode::allInputs(), {true, {}});
  addDestination("pads", 12);
  EXPECT_THAT(reached(), ElementsAre("keys", "pads"));
  EXPECT_EQ(sending()->inputsCriteria(), (MIDIEndpointIdentities{uniqueID(11), uniqueID(12)}))
      << "no devices and entities";
}

TEST_F(ConnectionsTest, ARefreshConnectsEachSourceOnceAndAListWithAnOldTokenHasItsSource) {
  const auto one = addSource("one", 1);
  const auto two = addSource("two", 2);
  addInputConnection(MIDIInputConnectionMode::allOutputs());
  auto& calls = service->calls();
  calls.resetCounts();
  calls.failNext(MIDIOperation::portConnectSource, -50, 1, *listening()->coreMIDIInputPortRef());
  calls.failNext(MIDIOperation::portDisconnectSource, -50);
  listening()->connect();
  EXPECT_EQ(calls.count(MIDIOperation::portDisconnectSource), 2U);
  EXPECT_EQ(calls.count(MIDIOperation::portConnectSource), 2U) << "whatever becomes of the first";
  for (const std::int32_t other : {0, 4, 5, 6, 7, 8}) {
    service->notify({.messageID = other});
  }
  settle();
  EXPECT_EQ(calls.count(MIDIOperation::portConnectSource), 2U)
      << "only what comes, goes and changes the setup";
  for (const std::int32_t change : {1, 2, 3}) {
    calls.resetCounts();
    service->notify({.messageID = change});
    settle();
    EXPECT_EQ(calls.count(MIDIOperation::portDisconnectSource), 2U) << change;
    EXPECT_EQ(calls.count(MIDIOperation::portConnectSource), 2U) << change;
  }
  calls.resetCounts();
  listening()->disconnect(std::set{two});
  EXPECT_EQ(calls.count(MIDIOperation::portDisconnectSource), 1U);
  calls.resetCounts();
  listening()->removeOutputs({uniqueID(2)});
  EXPECT_EQ(calls.count(MIDIOperation::portDisconnectSource), 3U) << "it, and then all for the refresh";
  EXPECT_EQ(calls.count(MIDIOperation::portConnectSource), 1U);
  listening()->addOutputs({uniqueID(2)});
  // The refresh comes while the block asks for the source of its token.
  play(one, 60);
  calls.interruptNext(MIDIOperation::objectGetStringProperty, [&] { listening()->removeAllOutputs(); });
  EXPECT_THAT(received(), ElementsAre(testing::StartsWith("one: ")));
  play(two, 60);
  EXPECT_THAT(received(), IsEmpty());
}

TEST_F(ConnectionsTest, WithoutAPortTheErrorsSaySo) {
  const auto notListening =
      MIDIIOError::connectionError("Not in a listening state; can't connect to endpoints.");
  const auto nothing = MIDIIOError::connectionError(
      "Attempted to disconnect outputs but was not in a listening state; nothing to disconnect.");
  const auto noPort = MIDIIOError::internalInconsistency("Output port reference is nil.");
  addSource("one", 1);
  for (const auto& [platform, operation] :
       {std::pair(PlatformVersion{10, 15}, MIDIOperation::inputPortCreateWithBlock),
        std::pair(PlatformVersion{13, 0}, MIDIOperation::inputPortCreateWithProtocol)}) {
    startOn(platform);
    addSource("one", 1);
    service->calls().failNext(operation, -50, 2);
    EXPECT_EQ(errorOf([&] { addInputConnection(MIDIInputConnectionMode::allOutputs()); }),
              MIDIIOError::osStatus(-50));
    EXPECT_EQ(errorOf([&] { listening()->disconnect(); }), nothing);
    service->notify({.messageID = 1});
    settle();
    EXPECT_EQ(listening()->coreMIDIInputPortRef(), std::nullopt) << "the error ends in the refresh";
    service->notify({.messageID = 1});
    settle();
    EXPECT_THAT(heard(), ElementsAre("one")) << "the next change brings the port";
  }
  service->calls().failNext(MIDIOperation::outputPortCreate, -50);
  EXPECT_EQ(errorOf([&] { addOutputConnection(MIDIOutputConnectionMode::allInputs()); }),
            MIDIIOError::osStatus(-50));
  EXPECT_EQ(errorOf([&] { sending()->sendPacketList(MIDIPacketList(100)); }), noPort);
  EXPECT_EQ(errorOf([&] { sending()->sendEventList({}); }), noPort);
  EXPECT_THAT(sending()->description(), testing::HasSubstr("outputPortRef: nil)"));

  const auto connection = listening();
  service->calls().interruptNext(MIDIOperation::portDispose, [&] {
    EXPECT_EQ(connection->coreMIDIInputPortRef(), std::nullopt) << "no lock is held";
  });
  connection->dispose();
  connection->dispose();
  EXPECT_EQ(connection->receiveHandler(), nullptr);
  connection->addOutputs({uniqueID(2)});
  EXPECT_EQ(errorOf([&] { connection->connect(); }), notListening) << "nothing brings it back";
  EXPECT_EQ(errorOf([&] { connection->disconnect(); }), nothing);
  addDestination("keys", 11);
  EXPECT_THAT(reached(), ElementsAre("keys"));
  sending()->dispose();
  sending()->addInputs({uniqueID(11)});
  sending()->create();
  EXPECT_THAT(reached(), IsEmpty());
  EXPECT_EQ(sending()->coreMIDIOutputPortRef(), std::nullopt);
  manager.reset();
  EXPECT_EQ(errorOf([&] { connection->connect(); }), notListening);
}

}  // namespace
}  // namespace midikit::io
