#include "MIDIKitIO/manager/MIDIIONotification.hpp"

#include <gmock/gmock.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "MIDIKitIO/objects/SystemObjects.hpp"
#include "tests/MIDIKitIO/MIDITestFixture.hpp"

namespace midikit::io {
namespace {

using core::MIDIIOError;
using Raw = MIDIIORawNotification;

class MIDIIONotificationTest : public MIDITestFixture {
 protected:
  MIDIIONotificationTest() {
    deviceRef =
        service->addDevice({.name = "dev",
                            .properties = {{"uniqueID", 10}},
                            .entities = {{.name = "ent",
                                          .properties = {{"uniqueID", 11}},
                                          .sources = {{.name = "src", .properties = {{"uniqueID", 12}}}}}}});
    sourceRef = service->MIDIGetSource(0);
    entityRef = service->MIDIDeviceGetEntity(deviceRef, 0);
  }

  std::optional<MIDIIONotification> made(const MIDINotification& message,
                                         const MIDIIOObjectCache* cache = nullptr) {
    return MIDIIONotification::from(Raw(message), *service, cache);
  }
  /// The text of what the message leads to; empty for nothing.
  std::string textOf(const MIDINotification& message, const MIDIIOObjectCache* cache = nullptr) {
    const auto notification = made(message, cache);
    return notification ? notification->description(*service) : "";
  }

  MIDIObjectRef deviceRef = 0;
  MIDIObjectRef entityRef = 0;
  MIDIObjectRef sourceRef = 0;
  const std::string device = "MIDIDevice(name: \"dev\", uniqueID: 10, exists: true)";
  const std::string entity = "MIDIEntity(name: \"ent\", uniqueID: 11, exists: true)";
  const std::string source = "MIDIOutputEndpoint(name: \"src\", uniqueID: 12)";
};

TEST_F(MIDIIONotificationTest, EachNumberLeadsToItsCase) {
  using Child = MIDINotification::Child;
  const auto driver = MIDINotification::IOError{deviceRef, -10845};
  EXPECT_EQ(textOf({1, {}}), "setupChanged");
  EXPECT_EQ(textOf({2, Child{entityRef, 1, sourceRef, 2}}), "added(" + source + ", parent: " + entity + ")");
  EXPECT_EQ(textOf({2, Child{0, -1, deviceRef, 0}}), "added(" + device + ")");
  EXPECT_EQ(textOf({2, Child{deviceRef, 16, entityRef, 17}}),
            "added(" + entity + ", parent: " + device + ")");
  EXPECT_EQ(textOf({3, Child{entityRef, 1, sourceRef, 2}}),
            "removed(" + source + ", parent: " + entity + ")");
  EXPECT_EQ(textOf({4, MIDINotification::Property{deviceRef, 0, "offline"}}),
            "propertyChanged(" + device + ", for: isOffline)");
  EXPECT_EQ(textOf({5, {}}), "thruConnectionChanged");
  EXPECT_EQ(textOf({6, {}}), "serialPortOwnerChanged");
  EXPECT_EQ(textOf({7, driver}),
            "ioError(device: " + device + ", error: " + MIDIIOError::osStatus(-10845).what() + ")");
  EXPECT_EQ(textOf({7, MIDINotification::IOError{sourceRef, 0}}),
            "ioError(device: MIDIDevice(name: \"src\", uniqueID: 12, exists: false), error: "
            "Unknown OSStatus error: 0)")
      << "the object's type is not checked";
}

TEST_F(MIDIIONotificationTest, EveryOtherNumberIsCarriedOver) {
  const auto isOther = [this](std::int32_t number) {
    const auto notification = made({number, {}});
    return notification == MIDIIONotification::other(number) &&
           notification->description(*service) == "other(ID: " + std::to_string(number) + ")" &&
           !Raw(MIDINotification{number, {}}).concernsObjects();
  };
  for (std::int32_t number = -300; number <= 300; ++number) {
    if (number < 1 || number > 7) {
      EXPECT_TRUE(isOther(number)) << number;
    }
  }
  EXPECT_TRUE(isOther(std::numeric_limits<std::int32_t>::min()));
  EXPECT_TRUE(isOther(std::numeric_limits<std::int32_t>::max()));
}

TEST_F(MIDIIONotificationTest, TheListsAreConcernedByFourOfTheMessages) {
  std::vector<std::int32_t> concerning;
  for (std::int32_t number = 0; number <= 8; ++number) {
    if (Raw(MIDINotification{number, {}}).concernsObjects()) {
      concerning.push_back(number);
    }
  }
  EXPECT_THAT(concerning, testing::ElementsAre(1, 2, 3, 4));
}

TEST_F(MIDIIONotificationTest, EachObjectTypeOfChildAndParentWithAndWithoutACache) {
  constexpr MIDIObjectRef gone = 0xFFFF;
  MIDIIOObjectCache cache;
  cache.devices = {MIDIDevice{.name = "old", .coreMIDIObjectRef = gone}};
  cache.inputEndpoints = {MIDIInputEndpoint{.name = "old", .coreMIDIObjectRef = gone}};
  cache.outputEndpoints = {MIDIOutputEndpoint{.name = "old", .coreMIDIObjectRef = gone}};
  const auto typeOf = [](std::int32_t code) -> std::optional<std::int32_t> {
    const bool isKnown = (code >= 0 && code <= 3) || (code >= 16 && code <= 19);
    return isKnown ? std::optional(code % 16) : std::nullopt;
  };
  for (const std::int32_t message : {2, 3}) {
    for (std::int32_t code = -1; code <= 20; ++code) {
      for (const bool withCache : {false, true}) {
        SCOPED_TRACE("message " + std::to_string(message) + ", type " + std::to_string(code) +
                     (withCache ? " with cache" : ""));
        const auto* used = withCache ? &cache : nullptr;
        const bool isKnown = typeOf(code).has_value();
        const bool isCached = withCache && message == 3 && typeOf(code) != 1;

        const auto asChild = made({message, MIDINotification::Child{0, -1, gone, code}}, used);
        ASSERT_EQ(asChild.has_value(), isKnown);
        const auto asParent = made({message, MIDINotification::Child{gone, code, deviceRef, 0}}, used);
        ASSERT_TRUE(asParent);
        const auto& child = message == 2 ? static_cast<const MIDIIONotification::Child&>(
                                               std::get<MIDIIONotification::Added>(asParent->asCase()))
                                         : std::get<MIDIIONotification::Removed>(asParent->asCase());
        EXPECT_EQ(child.parent.has_value(), isKnown);
        if (isKnown) {
          EXPECT_EQ(child.parent->name(), isCached ? "old" : "");
          const std::string name = isCached ? "\"old\"" : "\"\"";
          EXPECT_THAT(asChild->description(*service), testing::HasSubstr("(name: " + name));
        }
      }
    }
  }
}

TEST_F(MIDIIONotificationTest, WhatCantBeLookedUpLeadsToNothing) {
  const MIDINotification nothing[] = {
      {2, MIDINotification::Child{deviceRef, 0, 0, 1}},
      {3, MIDINotification::Child{deviceRef, 0, 0, 1}},
      {2, {}},
      {4, MIDINotification::Property{0, 0, "name"}},
      {4, MIDINotification::Property{deviceRef, -1, "name"}},
      {4, MIDINotification::Property{deviceRef, 0, "no such property"}},
      {4, MIDINotification::Property{deviceRef, 0, ""}},
      {4, {}},
  };
  for (const auto& message : nothing) {
    EXPECT_EQ(textOf(message), "");
  }
}

TEST_F(MIDIIONotificationTest, NotificationsAreTheSameByCaseAndReferences) {
  const AnyMIDIIOObject one = MIDIDevice{.name = "one", .uniqueID = 1, .coreMIDIObjectRef = 1};
  const AnyMIDIIOObject renamed = MIDIDevice{.name = "renamed", .uniqueID = 9, .coreMIDIObjectRef = 1};
  const AnyMIDIIOObject two = MIDIDevice{.name = "one", .uniqueID = 1, .coreMIDIObjectRef = 2};
  const MIDIDevice driver{.name = "driver", .coreMIDIObjectRef = 1};
  const MIDIDevice otherDriver{.name = "driver", .coreMIDIObjectRef = 2};
  using N = MIDIIONotification;
  const auto failed = [](const MIDIDevice& failing, std::int32_t status) {
    return N::ioError(failing, MIDIIOError::osStatus(status));
  };
  const std::vector<N> allDifferent = {
      N::setupChanged(),
      N::added(one, std::nullopt),
      N::added(two, std::nullopt),
      N::added(one, two),
      N::added(one, one),
      N::removed(one, std::nullopt),
      N::removed(one, two),
      N::propertyChanged(MIDIIOProperty::name, one),
      N::propertyChanged(MIDIIOProperty::name, two),
      N::propertyChanged(MIDIIOProperty::model, one),
      N::thruConnectionChanged(),
      N::serialPortOwnerChanged(),
      failed(driver, -1),
      failed(driver, -2),
      failed(otherDriver, -1),
      N::other(1),
      N::other(2),
  };
  for (std::size_t a = 0; a < allDifferent.size(); ++a) {
    for (std::size_t b = 0; b < allDifferent.size(); ++b) {
      EXPECT_EQ(allDifferent[a] == allDifferent[b], a == b) << a << " and " << b;
    }
  }
  EXPECT_EQ(N::added(one, two), N::added(renamed, two));
  EXPECT_EQ(N::propertyChanged(MIDIIOProperty::name, one), N::propertyChanged(MIDIIOProperty::name, renamed));
}

}  // namespace
}  // namespace midikit::io
