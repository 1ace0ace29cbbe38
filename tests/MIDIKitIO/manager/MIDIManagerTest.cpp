#include "MIDIKitIO/manager/MIDIManager.hpp"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "MIDIKitIO/manager/ObservableMIDIManager.hpp"
#include "tests/MIDIKitIO/MIDITestFixture.hpp"

namespace midikit::io {
namespace {

using core::MIDIIOError;
using core::MIDIOSStatus;
using core::MIDIProtocolVersion;
using karvex::rig::MIDIOperation;
using karvex::rig::simpleDevice;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

class MIDIManagerTest : public MIDITestFixture {
 protected:
  MIDIManagerSettings settings(const std::string& clientName = "client") {
    return {
        .service = service, .runtime = runtime, .clientName = clientName, .model = "m", .manufacturer = "f"};
  }
  std::shared_ptr<MIDIManager> started(MIDIManager::NotificationHandler handler = nullptr) {
    auto manager = MIDIManager::create(settings(), std::move(handler));
    manager->start();
    return manager;
  }
  std::shared_ptr<ObservableMIDIManager> startedObservable() {
    auto manager = ObservableMIDIManager::create(settings());
    manager->start();
    return manager;
  }
  /// Writes down each notification.
  MIDIManager::NotificationHandler writer() {
    return [this](const MIDIIONotification& notification, MIDIManager&) {
      reported_.push_back(notification.description(*service));
    };
  }
  /// What was reported since the last time, once everything has run.
  std::vector<std::string> reported() {
    settleMain();
    return std::exchange(reported_, {});
  }
  std::uint64_t refreshes() const { return service->calls().count(MIDIOperation::getNumberOfDevices); }
  /// The devices of the cache, or "none".
  std::vector<std::string> cached(const MIDIManager& manager) {
    const auto cache = manager.notificationCache();
    return cache ? namesOf(cache->devices) : std::vector<std::string>{"none"};
  }

  std::vector<std::string> reported_;
};

TEST_F(MIDIManagerTest, ANewManagerHasNeitherClientNorLists) {
  service->addDevice(simpleDevice("device"));
  service->calls().resetCounts();
  const auto manager = ObservableMIDIManager::create(settings());
  EXPECT_EQ(manager->coreMIDIClientRef(), 0U);
  EXPECT_THAT(manager->devices().devices, IsEmpty());
  EXPECT_THAT(manager->observableDevices.get().devices, IsEmpty());
  EXPECT_THAT(manager->observableEndpoints.get().outputs, IsEmpty());
  EXPECT_EQ(manager->endpoints().manager.lock(), manager);
  EXPECT_EQ(manager->observableEndpoints.get().manager.lock(), manager);
  EXPECT_FALSE(manager->notificationCache());
  EXPECT_FALSE(manager->notificationHandler());
  EXPECT_EQ(manager->clientName() + manager->model() + manager->manufacturer(), "clientmf");
  EXPECT_EQ(service->calls().total(), 0U);
}

TEST_F(MIDIManagerTest, TheQueuesLabelHasTheNamesLettersAndDigits) {
  const auto labelFor = [this](const std::string& name) {
    return MIDIManager::create(settings(name))->eventQueue()->label();
  };
  EXPECT_EQ(labelFor("My_App 2 \xC3\xA9!"), "org.karvex.midiManager.MyApp2\xC3\xA9.events");
  const auto manager = MIDIManager::create(settings("?!"));
  EXPECT_THAT(manager->eventQueue()->label(),
              MatchesRegex("org\\.karvex\\.midiManager\\.[0-9a-f-]+\\.events"));
  EXPECT_NE(labelFor("?!"), manager->eventQueue()->label());
  manager->start();
  EXPECT_THAT(service->clientNames(), ElementsAre("?!"));
}

TEST_F(MIDIManagerTest, StartCostsOneClientAndOneRefreshHoweverOftenItIsCalled) {
  service->addDevice(simpleDevice("device"));
  const auto manager = MIDIManager::create(settings());
  service->calls().resetCounts();
  for (int time = 0; time < 3; ++time) {
    manager->start();
    EXPECT_THAT(namesOf(manager->devices().devices), ElementsAre("device"));
    EXPECT_EQ(manager->endpoints().inputs.size() + manager->endpoints().outputs.size(), 2U);
  }
  EXPECT_NE(manager->coreMIDIClientRef(), 0U);
  EXPECT_EQ(service->calls().count(MIDIOperation::clientCreateWithBlock), 1U);
  EXPECT_EQ(refreshes(), 1U);
  EXPECT_EQ(service->calls().total(), 1U + 3U + 3U + 2U * 4U);
}

TEST_F(MIDIManagerTest, AStartThatFailsLeavesEverythingAndCanBeTriedAgain) {
  service->addDevice(simpleDevice("device"));
  const auto manager = MIDIManager::create(settings());
  service->calls().failNext(MIDIOperation::clientCreateWithBlock, -10839);
  EXPECT_EQ(errorOf([&] { manager->start(); }), MIDIIOError::osStatus(MIDIOSStatus::serverStartErr));
  EXPECT_EQ(manager->coreMIDIClientRef(), 0U);
  EXPECT_THAT(manager->devices().devices, IsEmpty());
  manager->start();
  EXPECT_THAT(namesOf(manager->devices().devices), ElementsAre("device"));
}

TEST_F(MIDIManagerTest, TheBestInterfaceOfThePlatformIsPreferred) {
  const auto newer = CoreMIDIAPIVersion::newCoreMIDI(MIDIProtocolVersion::midi1_0);
  const auto best = CoreMIDIAPIVersion::newCoreMIDI(MIDIProtocolVersion::midi2_0);
  const auto legacy = CoreMIDIAPIVersion::legacyCoreMIDI();
  const auto manager = MIDIManager::create(settings());
  EXPECT_EQ(manager->preferredAPI(), best);
  manager->setPreferredAPI(newer);
  EXPECT_EQ(manager->preferredAPI(), newer);
  manager->setPreferredAPI(legacy);
  EXPECT_EQ(manager->preferredAPI(), legacy);

  service = serviceOf({10, 15});
  const auto old = MIDIManager::create(settings());
  EXPECT_EQ(old->preferredAPI(), legacy);
  old->setPreferredAPI(best);
  EXPECT_EQ(old->preferredAPI(), legacy);
  EXPECT_EQ(CoreMIDIAPIVersion::bestFor({11, 0}), best);

  EXPECT_EQ(newer.rawValue(), 0);
  EXPECT_EQ(best.rawValue(), 1);
  EXPECT_EQ(legacy.rawValue(), 2);
  EXPECT_EQ(newer.description(), "New Core MIDI API (MIDI 1.0)");
  EXPECT_EQ(best.description(), "New Core MIDI API (MIDI 2.0)");
  EXPECT_EQ(legacy.description(), "Legacy Core MIDI API");
}

TEST_F(MIDIManagerTest, AHandlerAlwaysSeesTheNewListsAndItsOwnManager) {
  std::vector<std::size_t> seen;
  const auto manager = startedObservable();
  manager->setNotificationHandler([&](const MIDIIONotification& notification, ObservableMIDIManager& its) {
    EXPECT_EQ(&its, manager.get());
    const auto count = its.observableDevices.get().devices.size();
    EXPECT_EQ(its.devices().devices.size(), count);
    if (std::holds_alternative<MIDIIONotification::SetupChanged>(notification.asCase())) {
      seen.push_back(count);
    }
  });
  const auto first = service->addDevice(simpleDevice("first"));
  settleMain();
  service->addDevice(simpleDevice("second"));
  settleMain();
  service->removeDevice(first);
  settleMain();
  EXPECT_THAT(seen, ElementsAre(1U, 2U, 1U));
}

TEST_F(MIDIManagerTest, ObserversAreToldOfEachRefreshBeforeTheHandler) {
  const auto manager = startedObservable();
  std::vector<std::string> order;
  const auto devices = manager->observableDevices.observe(
      [&](const MIDIDevices& now) { order.push_back("devices " + std::to_string(now.devices.size())); });
  const auto endpoints = manager->observableEndpoints.observe([&](const MIDIEndpoints& now) {
    order.push_back("endpoints " + std::to_string(now.inputs.size()) + " " +
                    std::to_string(manager->observableEndpoints.get().outputsUnowned.size()));
  });
  manager->setNotificationHandler(
      [&](const MIDIIONotification&, ObservableMIDIManager&) { order.emplace_back("handler"); });
  service->addDevice(simpleDevice("device"));
  settle();
  order.clear();
  service->notify({.messageID = 1});
  settle();
  order.emplace_back("settled");
  settleMain();
  order.erase(std::unique(order.begin(), order.end()), order.end());
  EXPECT_THAT(order, ElementsAre("devices 1", "endpoints 1 1", "settled", "handler"));
}

TEST_F(MIDIManagerTest, TheObservableListsHaveAWalkOfTheirOwn) {
  startedObservable();
  EXPECT_EQ(refreshes(), 2U);
  EXPECT_EQ(service->calls().count(MIDIOperation::getNumberOfSources), 2U);
}

TEST_F(MIDIManagerTest, AttachingAndTakingAwayADeviceIsToldObjectByObject) {
  const auto manager = started(writer());
  auto description = simpleDevice("dev");
  description.properties["uniqueID"] = 10;
  const auto ref = service->addDevice(description);
  EXPECT_THAT(reported(), ElementsAre("added(MIDIDevice(name: \"dev\", uniqueID: 10, exists: true))",
                                      HasSubstr("added(MIDIEntity(name: \"dev\""),
                                      HasSubstr("added(MIDIOutputEndpoint(name: \"dev\""),
                                      HasSubstr("added(MIDIInputEndpoint(name: \"dev\""), "setupChanged"));
  service->setProperty(ref, "offline", 1);
  EXPECT_THAT(reported(),
              ElementsAre("propertyChanged(MIDIDevice(name: \"dev\", uniqueID: 10, exists: true), "
                          "for: isOffline)"));
  service->removeDevice(ref);
  const auto removals = reported();
  ASSERT_EQ(removals.size(), 5U);
  EXPECT_THAT(std::vector(removals.begin(), removals.begin() + 2),
              Each(testing::AnyOf(HasSubstr("removed(MIDIOutputEndpoint(name: \"dev\""),
                                  HasSubstr("removed(MIDIInputEndpoint(name: \"dev\""))));
  EXPECT_THAT(removals[2], HasSubstr("removed(MIDIEntity(name: \"\", uniqueID: 0, exists: false), parent: "
                                     "MIDIDevice(name: \"dev\""))
      << "entities are not in the cache";
  EXPECT_EQ(removals[3], "removed(MIDIDevice(name: \"dev\", uniqueID: 10, exists: false))");
}

TEST_F(MIDIManagerTest, ARemovalBeforeEverythingElseFindsNoCache) {
  const auto ref = service->addDevice({.name = "dev"});
  settle();
  const auto manager = started(writer());
  service->removeDevice(ref);
  EXPECT_THAT(reported(),
              ElementsAre("removed(MIDIDevice(name: \"\", uniqueID: 0, exists: false))", "setupChanged"));
}

TEST_F(MIDIManagerTest, RemovalsInARowAreLookedUpInTheSameCache) {
  const auto manager = started();
  const auto first = service->addDevice({.name = "first"});
  const auto second = service->addDevice({.name = "second"});
  service->notify({.messageID = 5});
  settle();
  manager->setNotificationHandler(writer());
  const auto removal = [](MIDIObjectRef device) {
    return MIDINotification{3, MIDINotification::Child{.child = device, .childType = 0}};
  };
  // Both are gone from the lists when the first message comes.
  service->calls().failNext(MIDIOperation::getNumberOfDevices, noErr, 2);
  service->notify(removal(first));
  service->notify(removal(second));
  settle();
  EXPECT_THAT(manager->devices().devices, IsEmpty());
  EXPECT_THAT(cached(*manager), ElementsAre("first", "second"));
  EXPECT_THAT(reported(), ElementsAre(HasSubstr("removed(MIDIDevice(name: \"first\""),
                                      HasSubstr("removed(MIDIDevice(name: \"second\"")));
}

TEST_F(MIDIManagerTest, EachKindOfMessageDoesItsOwnToListsAndCache) {
  // The messages without the lists' own changes: one device is listed, none was there before.
  struct Row {
    MIDINotification message;
    bool refreshes;
    bool replacesCache;
    bool isReported;
  };
  const MIDINotification::Child child{.child = 1, .childType = 0};
  const std::vector<Row> rows = {
      {{0, {}}, false, true, true},
      {{1, {}}, true, true, true},
      {{2, child}, true, true, true},
      {{2, {}}, true, true, false},
      {{3, child}, true, false, true},
      {{3, {}}, true, false, false},
      {{4, MIDINotification::Property{1, 0, "name"}}, true, true, true},
      {{4, MIDINotification::Property{1, 0, "no such property"}}, true, true, false},
      {{5, {}}, false, true, true},
      {{6, {}}, false, true, true},
      {{7, MIDINotification::IOError{1, -50}}, false, true, true},
      {{8, {}}, false, true, true},
  };
  service->addDevice({.name = "device"});
  settle();
  for (std::size_t row = 0; row < rows.size(); ++row) {
    SCOPED_TRACE(row);
    const auto& [message, refreshesLists, replacesCache, isReported] = rows[row];
    const auto manager = MIDIManager::create(settings(), writer());
    service->calls().failNext(MIDIOperation::getNumberOfDevices, noErr);
    manager->start();
    service->notify(message);
    settle();
    EXPECT_EQ(manager->devices().devices.size(), refreshesLists ? 1U : 0U);
    EXPECT_EQ(manager->notificationCache().has_value(), replacesCache);
    if (replacesCache) {
      EXPECT_THAT(cached(*manager), IsEmpty()) << "the lists from before the refresh";
    }
    EXPECT_EQ(reported().size(), isReported ? 1U : 0U);
  }
}

TEST_F(MIDIManagerTest, AHandlerThatComesLaterIsNotToldOfWhatWas) {
  const auto manager = started();
  service->notify({.messageID = 1});
  settle();
  manager->setNotificationHandler(writer());
  EXPECT_THAT(reported(), IsEmpty());
  service->notify({.messageID = 1});
  settle();
  manager->setNotificationHandler(nullptr);
  EXPECT_THAT(reported(), ElementsAre("setupChanged")) << "it was there when the message came";
  service->notify({.messageID = 1});
  EXPECT_THAT(reported(), IsEmpty());
}

TEST_F(MIDIManagerTest, WhatIsQueuedKeepsTheManagerAndNothingElseDoes) {
  auto manager = started(writer());
  const std::weak_ptr<MIDIManager> weak = manager;
  service->notify({.messageID = 6});
  settle();
  manager.reset();
  EXPECT_FALSE(weak.expired()) << "the handler is still to be called with it";
  EXPECT_THAT(reported(), ElementsAre("serialPortOwnerChanged"));
  EXPECT_TRUE(weak.expired());
  service->calls().resetCounts();
  service->notify({.messageID = 1});
  EXPECT_THAT(reported(), IsEmpty());
  EXPECT_EQ(service->calls().total(), 0U) << "a late message does nothing";
}

TEST_F(MIDIManagerTest, AHandlerMayReplaceItselfAndRefresh) {
  const auto manager = started();
  manager->setNotificationHandler([&](const MIDIIONotification&, MIDIManager& its) {
    reported_.emplace_back("once");
    its.setNotificationHandler(nullptr);
    its.refreshObjects();
    its.removeAll();
  });
  service->notify({.messageID = 1});
  EXPECT_THAT(reported(), ElementsAre("once"));
}

}  // namespace
}  // namespace midikit::io
