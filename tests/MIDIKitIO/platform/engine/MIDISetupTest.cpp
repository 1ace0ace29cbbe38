#include <fmt/format.h>

#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"
#include "tests/MIDIKitIO/platform/engine/MIDIServiceFixture.hpp"

namespace midikit::io::engine {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class MIDISetupTest : public MIDIServiceFixture {
 protected:
  std::optional<std::string> text(Ref object, std::string_view key) const {
    std::optional<std::string> value;
    return service.MIDIObjectGetStringProperty(object, key, value) == noErr ? value : "no success";
  }
  std::int32_t number(Ref object, std::string_view key) const {
    std::int32_t value = 0;
    EXPECT_EQ(service.MIDIObjectGetIntegerProperty(object, key, value), noErr) << key;
    return value;
  }
};

TEST_F(MIDISetupTest, TheTreeEndsWithItsListsAndKnowsWhatKindAnObjectIs) {
  const auto device =
      service.addDevice({.name = "Desk",
                         .entities = {{.name = "A", .sources = {{.name = "A in"}}},
                                      {.name = "B", .destinations = {{.name = "Desk out"}}}}});
  const auto entity = service.MIDIDeviceGetEntity(device, 1);
  EXPECT_EQ(service.MIDIGetDevice(1), 0U);
  EXPECT_EQ(service.MIDIEntityGetDestination(entity, 1), 0U);
  Ref up = 0;
  EXPECT_EQ(service.MIDIEntityGetDevice(device, up), statusOf(MIDIOSStatus::objectNotFound));
  EXPECT_EQ(service.MIDIEndpointGetEntity(entity, up), statusOf(MIDIOSStatus::objectNotFound));
  EXPECT_EQ(text(source(), kMIDIPropertyDisplayName), "Desk A in");
  EXPECT_EQ(text(destination(), kMIDIPropertyDisplayName), "Desk out");
}

TEST_F(MIDISetupTest, ComingAndGoingIsReportedObjectByObjectAndThenOnce) {
  const auto device = service.addDevice(simpleDevice("Desk"));
  const auto entity = service.MIDIDeviceGetEntity(device, 0);
  const auto up = [&](int message, Ref parent, int parentType, Ref child, int type) {
    return fmt::format("{} {}/{} {}/{}", message, parent, parentType, child, type);
  };
  const Ref in = source();
  const Ref out = destination();
  EXPECT_THAT(reported(), ElementsAre(up(2, 0, -1, device, 0), up(2, device, 0, entity, 1),
                                      up(2, entity, 1, in, 2), up(2, entity, 1, out, 3), "1"));
  EXPECT_FALSE(service.removeDevice(entity));
  EXPECT_TRUE(service.removeDevice(device));
  EXPECT_FALSE(service.removeDevice(device));
  EXPECT_THAT(reported(), ElementsAre(up(3, entity, 1, out, 3), up(3, entity, 1, in, 2),
                                      up(3, device, 0, entity, 1), up(3, 0, -1, device, 0), "1"));
  EXPECT_EQ(service.MIDIGetNumberOfDevices() + service.MIDIGetNumberOfSources() +
                service.MIDIGetNumberOfDestinations(),
            0U);
}

TEST_F(MIDISetupTest, APropertyIsReadAsWhatItIsAndFailsOtherwise) {
  const auto device = service.addDevice(
      {.properties = {{"text", "T"}, {"number", 7}, {"map", PropertyDictionary{{"a", 1}}}}});
  std::optional<std::string> text = "before";
  std::int32_t number = -1;
  std::optional<PropertyDictionary> map;
  const struct {
    const char* key;
    OSStatus asText, asNumber, asMap;
  } cases[] = {
      {"text", noErr, statusOf(MIDIOSStatus::wrongPropertyType), statusOf(MIDIOSStatus::wrongPropertyType)},
      {"number", statusOf(MIDIOSStatus::wrongPropertyType), noErr, statusOf(MIDIOSStatus::wrongPropertyType)},
      {"map", statusOf(MIDIOSStatus::wrongPropertyType), statusOf(MIDIOSStatus::wrongPropertyType), noErr},
      {"name", statusOf(MIDIOSStatus::unknownProperty), statusOf(MIDIOSStatus::unknownProperty),
       statusOf(MIDIOSStatus::unknownProperty)},
  };
  for (const auto& property : cases) {
    EXPECT_EQ(service.MIDIObjectGetStringProperty(device, property.key, text), property.asText)
        << property.key;
    EXPECT_EQ(service.MIDIObjectGetIntegerProperty(device, property.key, number), property.asNumber)
        << property.key;
    EXPECT_EQ(service.MIDIObjectGetDictionaryProperty(device, property.key, map), property.asMap)
        << property.key;
  }
  EXPECT_EQ(text, "T");
  EXPECT_EQ(number, 7);
  EXPECT_EQ(map->size(), 1U);
  EXPECT_EQ(service.MIDIObjectGetStringProperty(device + 1, "text", text),
            statusOf(MIDIOSStatus::objectNotFound));
  EXPECT_EQ(text, "T") << "out values are written on success alone";

  EXPECT_EQ(service.answerWithNone(device, "text"), noErr);
  EXPECT_EQ(service.MIDIObjectGetStringProperty(device, "text", text), noErr);
  EXPECT_EQ(text, std::nullopt);
}

TEST_F(MIDISetupTest, AllPropertiesComeTogetherAndDeepWithThoseBelow) {
  const auto device = service.addDevice({.name = "Desk",
                                         .properties = {{"SerialNumber", "12"}},
                                         .sharedProperties = {{"model", "M"}, {"SerialNumber", "lost"}},
                                         .entities = {{.name = "E", .sources = {{.name = "S"}}}}});
  PropertyDictionary all;
  EXPECT_EQ(service.MIDIObjectGetProperties(device, all, false), noErr);
  EXPECT_EQ(all.size(), 4U) << "name, unique ID, serial number and model";
  EXPECT_EQ(std::get<std::string>(all.at("SerialNumber")), "12");
  EXPECT_EQ(service.MIDIObjectGetProperties(device, all, true), noErr);
  const auto& entity = std::get<PropertyDictionary>(std::get<PropertyDictionary>(all.at("entities")).at("0"));
  const auto& below =
      std::get<PropertyDictionary>(std::get<PropertyDictionary>(entity.at("sources")).at("0"));
  EXPECT_EQ(std::get<std::string>(below.at("model")), "M");
  EXPECT_EQ(std::get<std::int32_t>(below.at("protocol")), 1);
  EXPECT_EQ(service.MIDIObjectGetProperties(0, all, false), statusOf(MIDIOSStatus::objectNotFound));
}

TEST_F(MIDISetupTest, SettingAPropertyIsReportedAndKeepsItsKind) {
  service.addDevice(simpleDevice("Desk"));
  const Ref in = source();
  reported();
  EXPECT_EQ(service.MIDIObjectSetStringProperty(in, kMIDIPropertyName, "Other"), noErr);
  EXPECT_EQ(service.MIDIObjectSetIntegerProperty(in, kMIDIPropertyPrivate, 1), noErr);
  EXPECT_EQ(service.MIDIObjectSetIntegerProperty(in, kMIDIPropertyName, 1),
            statusOf(MIDIOSStatus::wrongPropertyType));
  EXPECT_EQ(service.MIDIObjectSetStringProperty(in, kMIDIPropertyPrivate, "1"),
            statusOf(MIDIOSStatus::wrongPropertyType));
  EXPECT_EQ(service.MIDIObjectSetStringProperty(0, kMIDIPropertyName, "x"),
            statusOf(MIDIOSStatus::objectNotFound));
  EXPECT_EQ(service.MIDIObjectSetIntegerProperty(client, kMIDIPropertyPrivate, 1),
            statusOf(MIDIOSStatus::objectNotFound));
  EXPECT_THAT(reported(), ElementsAre(fmt::format("4 {}/2 name", in), fmt::format("4 {}/2 private", in)));
  EXPECT_EQ(text(in, kMIDIPropertyDisplayName), "Desk Other");
  EXPECT_EQ(number(in, kMIDIPropertyPrivate), 1);
  EXPECT_EQ(service.removeProperty(in, kMIDIPropertyName), noErr);
  EXPECT_EQ(text(in, kMIDIPropertyName), "no success");
}

TEST_F(MIDISetupTest, UniqueIdsAreUniqueThroughoutTheSystem) {
  std::set<std::int32_t> ids;
  for (int i = 0; i < 1000; ++i) {
    const auto device = service.addDevice({.entities = {{.sources = {{}}}}});
    ids.insert(number(device, kMIDIPropertyUniqueID));
    ids.insert(number(source(service.MIDIGetNumberOfSources() - 1), kMIDIPropertyUniqueID));
  }
  EXPECT_EQ(ids.size(), 2000U);
  EXPECT_FALSE(ids.contains(0));

  const Ref first = source(0);
  const auto taken = number(source(1), kMIDIPropertyUniqueID);
  const auto before = number(first, kMIDIPropertyUniqueID);
  EXPECT_EQ(service.MIDIObjectSetIntegerProperty(first, kMIDIPropertyUniqueID, taken),
            statusOf(MIDIOSStatus::idNotUnique));
  EXPECT_EQ(number(first, kMIDIPropertyUniqueID), before);
  EXPECT_EQ(service.MIDIObjectSetIntegerProperty(first, kMIDIPropertyUniqueID, before), noErr) << "its own";
  EXPECT_EQ(service.MIDIObjectSetIntegerProperty(first, kMIDIPropertyUniqueID, 4711), noErr);
  EXPECT_EQ(service.MIDIObjectSetIntegerProperty(source(1), kMIDIPropertyUniqueID, before), noErr)
      << "what was given up is free";
  service.removeDevice(service.MIDIGetDevice(0));
  const auto again = service.addDevice({.properties = {{"uniqueID", 4711}}});
  EXPECT_EQ(number(again, kMIDIPropertyUniqueID), 4711) << "what has gone leaves its ID";
  EXPECT_NE(number(service.addDevice({.properties = {{"uniqueID", 4711}}}), kMIDIPropertyUniqueID), 4711);
}

TEST_F(MIDISetupTest, BeforeEventListsEndpointsHaveNoProtocol) {
  for (const bool isModern : {false, true}) {
    karvex::rig::VirtualMidiService other(runtime,
                                          isModern ? PlatformVersion{11, 0} : PlatformVersion{10, 15});
    other.addDevice(simpleDevice("Desk"));
    Ref someone = 0;
    Ref made = 0;
    ASSERT_EQ(other.MIDIClientCreateWithBlock("c", someone, nullptr), noErr);
    std::int32_t protocol = 0;
    EXPECT_EQ(other.MIDIObjectGetIntegerProperty(other.MIDIGetSource(0), kMIDIPropertyProtocolID, protocol),
              isModern ? noErr : statusOf(MIDIOSStatus::unknownProperty));
    EXPECT_EQ(other.MIDISourceCreateWithProtocol(someone, "s", MIDIProtocolID::midi2_0, made),
              isModern ? noErr : statusOf(MIDIOSStatus::unknownError));
    EXPECT_EQ(other.MIDISourceCreate(someone, "s", made), noErr);
    EXPECT_EQ(other.MIDIReceivedEventList(made, {}), isModern ? noErr : statusOf(MIDIOSStatus::unknownError));
  }
}

TEST_F(MIDISetupTest, CallsAreCountedAndFailWhenTheyAreTold) {
  service.addDevice(simpleDevice("Desk"));
  service.addDevice(simpleDevice("Other"));
  auto& calls = service.calls();
  calls.resetCounts();
  const Ref second = service.MIDIGetDevice(1);
  calls.failNext(karvex::rig::MIDIOperation::objectGetStringProperty, -1, 2, second);
  EXPECT_EQ(text(service.MIDIGetDevice(0), kMIDIPropertyName), "Desk");
  EXPECT_EQ(text(second, kMIDIPropertyName), "no success");
  EXPECT_EQ(text(second, kMIDIPropertyName), "no success");
  EXPECT_EQ(text(second, kMIDIPropertyName), "Other");
  calls.failNext(karvex::rig::MIDIOperation::getNumberOfDevices, -1);
  EXPECT_EQ(service.MIDIGetNumberOfDevices(), 0U);
  EXPECT_EQ(service.MIDIGetNumberOfDevices(), 2U);
  EXPECT_EQ(calls.count(karvex::rig::MIDIOperation::getDevice), 2U);
  EXPECT_EQ(calls.count(karvex::rig::MIDIOperation::objectGetStringProperty), 4U);
  EXPECT_EQ(calls.total(), 8U);

  calls.failNext(karvex::rig::MIDIOperation::clientCreateWithBlock, -10839);
  calls.failNext(karvex::rig::MIDIOperation::clientCreateWithBlock, -50);
  Ref made = 77;
  EXPECT_EQ(service.MIDIClientCreateWithBlock("c", made, nullptr), -10839);
  EXPECT_EQ(service.MIDIClientCreateWithBlock("c", made, nullptr), -50);
  EXPECT_EQ(made, 77U);
  calls.failNext(karvex::rig::MIDIOperation::clientCreateWithBlock, -50);
  calls.clearFailures();
  EXPECT_EQ(service.MIDIClientCreateWithBlock("c", made, nullptr), noErr);
  EXPECT_THAT(service.clientNames(), ElementsAre("client", "c"));
}

TEST_F(MIDISetupTest, EveryClientHearsEverythingInOrderAndMayUseTheServiceMeanwhile) {
  std::vector<std::string> heard;
  Ref other = 0;
  ASSERT_EQ(
      service.MIDIClientCreateWithBlock("other", other,
                                        [&](const MIDINotification& message) {
                                          heard.push_back(fmt::format("{} of {}", message.messageID,
                                                                      service.MIDIGetNumberOfDevices()));
                                          if (heard.size() == 1) {
                                            service.addDevice({});
                                          }
                                        }),
      noErr);
  service.notify({.messageID = 0});
  service.notify({7, MIDINotification::IOError{1, -5}});
  EXPECT_THAT(reported(), ElementsAre("0", "7", "2 0/-1 3/0", "1"));
  EXPECT_THAT(heard, ElementsAre("0 of 0", "7 of 1", "2 of 1", "1 of 1"));
}

TEST_F(MIDISetupTest, NoBlockRunsAfterTheServicesEnd) {
  int heard = 0;
  {
    karvex::rig::VirtualMidiService brief(runtime);
    Ref someone = 0;
    ASSERT_EQ(brief.MIDIClientCreateWithBlock("c", someone, [&](const auto&) { ++heard; }), noErr);
    brief.notify({.messageID = 1});
    settle();
    brief.notify({.messageID = 1});
  }
  settle();
  EXPECT_EQ(heard, 1);
}

}  // namespace
}  // namespace midikit::io::engine
