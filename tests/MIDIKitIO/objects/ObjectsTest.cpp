#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <vector>

#include "MIDIKitIO/objects/AnyMIDIIOObject.hpp"
#include "MIDIKitIO/objects/MIDIDevices.hpp"
#include "MIDIKitIO/objects/MIDIEndpoints.hpp"
#include "MIDIKitIO/objects/ObjectFor.hpp"
#include "MIDIKitIO/objects/SystemObjects.hpp"
#include "tests/MIDIKitIO/MIDITestFixture.hpp"

namespace midikit::io {
namespace {

using core::MIDIIOError;
using core::MIDIOSStatus;
using karvex::rig::DeviceDescription;
using karvex::rig::MIDIOperation;
using karvex::rig::simpleDevice;
using testing::ElementsAre;
using testing::IsEmpty;

/// A device with two entities: one with two sources, one with a source and a destination.
DeviceDescription mixer() {
  return {
      .name = "mixer",
      .properties = {{"uniqueID", 100}},
      .entities = {
          {.name = "left", .sources = {{.name = "l1"}, {.name = "l2"}}},
          {.name = "right",
           .sources = {{.name = "r1", .properties = {{"uniqueID", 200}}}},
           .destinations = {{.name = "r", .properties = {{"displayName", "mixer R"}, {"uniqueID", 300}}}}}}};
}

class ObjectsTest : public MIDITestFixture {};

TEST_F(ObjectsTest, TheSystemsListsAreInThePlatformsOrderWhateverTheNames) {
  service->addDevice(simpleDevice("same"));
  service->addDevice({.name = std::nullopt, .properties = {{"uniqueID", -7}}});
  service->addDevice(simpleDevice("same"));
  const auto devices = systemDevices(*service);
  EXPECT_THAT(namesOf(devices), ElementsAre("same", "", "same"));
  EXPECT_EQ(devices[1].uniqueID, -7);
  for (std::size_t index = 0; index < devices.size(); ++index) {
    EXPECT_EQ(devices[index].coreMIDIObjectRef, service->MIDIGetDevice(index));
  }
  EXPECT_FALSE(devices[0] == devices[2]);
}

TEST_F(ObjectsTest, AnEndpointsDisplayNameDoesntStandInForItsNameNorTheOtherWayRound) {
  service->addDevice(mixer());
  const auto destination = service->MIDIGetDestination(0);
  const auto endpoint = systemDestinations(*service).at(0);
  EXPECT_EQ(endpoint.name, "r");
  EXPECT_EQ(endpoint.displayName, "mixer R");
  service->removeProperty(destination, "displayName");
  EXPECT_EQ(makeInputEndpoint(*service, destination).displayName, "");
  service->removeProperty(destination, "uniqueID");
  service->removeProperty(destination, "name");
  EXPECT_EQ(systemDestinations(*service).at(0).debugText(), "MIDIInputEndpoint(name: \"\", uniqueID: 0)");
}

TEST_F(ObjectsTest, WhatLeavesTheListDuringAWalkIsLeftOut) {
  service->addDevice(simpleDevice("leaves"));
  service->addDevice(simpleDevice("stays"));
  service->calls().failNext(MIDIOperation::getDevice, noErr);
  EXPECT_THAT(namesOf(systemDevices(*service)), ElementsAre("stays"));
}

TEST_F(ObjectsTest, ADeviceLeadsToItsEntitiesAndEndpointsAndTheyLeadBack) {
  service->addDevice(mixer());
  const auto device = systemDevices(*service).at(0);
  EXPECT_THAT(namesOf(device.entities(*service)), ElementsAre("left", "right"));
  EXPECT_THAT(namesOf(device.outputs(*service)), ElementsAre("l1", "l2", "r1"));
  EXPECT_THAT(namesOf(device.inputs(*service)), ElementsAre("r"));
  const auto right = device.entities(*service).at(1);
  EXPECT_THAT(namesOf(right.outputs(*service)), ElementsAre("r1"));
  EXPECT_EQ(right.device(*service), device);
  const AnyMIDIEndpoint any = right.outputs(*service).at(0);
  EXPECT_EQ(any.entity(*service), right);
  EXPECT_EQ(any.device(*service), device);

  const MIDIDevices devices{systemDevices(*service)};
  EXPECT_THAT(namesOf(devices.outputsByDevice(*service).at(device)), ElementsAre("l1", "l2", "r1"));
  EXPECT_THAT(namesOf(devices.inputsByDevice(*service).at(device)), ElementsAre("r"));

  service->removeDevice(device.coreMIDIObjectRef);
  EXPECT_THAT(device.entities(*service), IsEmpty());
  EXPECT_THAT(right.outputs(*service), IsEmpty());
}

TEST_F(ObjectsTest, AnEntityWithoutADeviceDoesntExistButIsNoFailure) {
  service->addDevice(mixer());
  const auto entity = systemDevices(*service).at(0).entities(*service).at(0);
  EXPECT_TRUE(entity.exists(*service));
  service->calls().failNext(MIDIOperation::entityGetDevice, noErr, 2);
  EXPECT_EQ(entity.device(*service), std::nullopt);
  EXPECT_FALSE(entity.exists(*service));
  service->calls().failNext(MIDIOperation::entityGetDevice, -10845, 2);
  EXPECT_EQ(errorOf([&] { entity.device(*service); }), MIDIIOError::osStatus(MIDIOSStatus::unknownError));
  EXPECT_FALSE(entity.exists(*service));
}

TEST_F(ObjectsTest, AnEndpointWithoutAnEntityIsAFailureThatNamesIt) {
  MIDIObjectRef client = 0;
  MIDIObjectRef source = 0;
  ASSERT_EQ(service->MIDIClientCreateWithBlock("client", client, [](const auto&) {}), noErr);
  ASSERT_EQ(service->MIDISourceCreate(client, "own", source), noErr);
  const auto endpoint = makeOutputEndpoint(*service, source);
  const auto error =
      MIDIIOError::readError("Error getting entity ID for endpoint ref " + std::to_string(source));
  EXPECT_EQ(errorOf([&] { endpoint.entity(*service); }), error);
  EXPECT_EQ(errorOf([&] { endpoint.device(*service); }), error);
  service->MIDIEndpointDispose(source);
  EXPECT_EQ(errorOf([&] { endpoint.entity(*service); }), MIDIIOError::osStatus(MIDIOSStatus::objectNotFound));
}

TEST_F(ObjectsTest, ObjectsExistByTheirUniqueID) {
  const auto ref = service->addDevice(mixer());
  const auto device = makeDevice(*service, ref);
  const auto input = device.inputs(*service).at(0);
  const auto output = device.outputs(*service).at(2);
  const auto existing = [&] {
    return std::vector{device.exists(*service), input.exists(*service), output.exists(*service),
                       AnyMIDIEndpoint(input).exists(*service), AnyMIDIEndpoint(output).exists(*service)};
  };
  EXPECT_THAT(existing(), ElementsAre(true, true, true, true, true));
  EXPECT_EQ(device.debugText(*service), "MIDIDevice(name: \"mixer\", uniqueID: 100, exists: true)");
  service->removeDevice(ref);
  EXPECT_THAT(existing(), ElementsAre(false, false, false, false, false));
  EXPECT_EQ(AnyMIDIIOObject(device).debugText(*service),
            "MIDIDevice(name: \"mixer\", uniqueID: 100, exists: false)");
  service->addDevice(mixer());
  EXPECT_THAT(existing(), ElementsAre(true, true, true, true, true)) << "other references, same unique IDs";
}

TEST_F(ObjectsTest, DebugTextsNameTheRecord) {
  service->addDevice(mixer());
  const auto device = systemDevices(*service).at(0);
  const auto entity = device.entities(*service).at(1);
  EXPECT_EQ(AnyMIDIIOObject(entity).debugText(*service),
            "MIDIEntity(name: \"right\", uniqueID: " + std::to_string(entity.uniqueID) + ", exists: true)");
  const auto output = entity.outputs(*service).at(0);
  EXPECT_EQ(output.debugText(), "MIDIOutputEndpoint(name: \"r1\", uniqueID: 200)");
  EXPECT_EQ(AnyMIDIEndpoint(output).debugText(), "AnyMIDIEndpoint(name: \"r1\", uniqueID: 200)");
  EXPECT_EQ(AnyMIDIIOObject(AnyMIDIEndpoint(output)).debugText(*service), output.debugText());
}

TEST_F(ObjectsTest, EndpointsAreFoundByUniqueIDAndTheWalkStopsThere) {
  service->addDevice(mixer());
  service->addDevice(simpleDevice("after it"));
  service->calls().resetCounts();
  EXPECT_EQ(findSource(*service, 200), service->MIDIGetSource(2));
  EXPECT_EQ(service->calls().count(MIDIOperation::getSource), 3U + 1U);
  EXPECT_EQ(findDestination(*service, 300), service->MIDIGetDestination(0));
  EXPECT_EQ(findDestination(*service, 200), std::nullopt) << "that is a source's";
}

TEST_F(ObjectsTest, RecordsAreTheSameByReferenceAndEndpointsByUniqueID) {
  const MIDIDevice device{.name = "a", .uniqueID = 1, .coreMIDIObjectRef = 5};
  const MIDIDevice renamed{.name = "b", .uniqueID = 2, .coreMIDIObjectRef = 5};
  const MIDIDevice other{.name = "a", .uniqueID = 1, .coreMIDIObjectRef = 6};
  EXPECT_TRUE(device == renamed && std::hash<MIDIDevice>()(device) == std::hash<MIDIDevice>()(renamed));
  EXPECT_FALSE(device == other);
  EXPECT_TRUE((MIDIDevices{{device, other}}) == (MIDIDevices{{renamed, other}}));
  EXPECT_FALSE((MIDIDevices{{device, other}}) == (MIDIDevices{{other, device}}));
  EXPECT_FALSE((MIDIDevices{{device}}) == (MIDIDevices{{device, device}}));
  EXPECT_EQ(std::hash<MIDIDevices>()({{device, other}}), std::hash<MIDIDevices>()({{renamed, other}}));

  const MIDIInputEndpoint input{.name = "a", .uniqueID = 1, .coreMIDIObjectRef = 5, .displayName = "A"};
  const MIDIInputEndpoint moved{.name = "b", .uniqueID = 1, .coreMIDIObjectRef = 6};
  const MIDIInputEndpoint neighbour{.name = "a", .uniqueID = 2, .coreMIDIObjectRef = 5, .displayName = "A"};
  EXPECT_TRUE(input == moved &&
              std::hash<MIDIInputEndpoint>()(input) == std::hash<MIDIInputEndpoint>()(moved));
  EXPECT_FALSE(input == neighbour);
  EXPECT_TRUE(AnyMIDIEndpoint(input) == AnyMIDIEndpoint(moved));
  MIDIEndpoints endpoints;
  endpoints.inputs = {input};
  MIDIEndpoints same;
  same.inputs = {moved};
  EXPECT_TRUE(endpoints == same && std::hash<MIDIEndpoints>()(endpoints) == std::hash<MIDIEndpoints>()(same));
  same.inputsUnowned = {moved};
  EXPECT_FALSE(endpoints == same);
}

TEST_F(ObjectsTest, ATypeCodeDecidesWhatAReferenceIsOfWithAndWithoutACache) {
  constexpr MIDIObjectRef gone = 0xFFFF;
  MIDIIOObjectCache cache;
  cache.devices = {MIDIDevice{.name = "D", .uniqueID = 1, .coreMIDIObjectRef = gone}};
  cache.inputEndpoints = {MIDIInputEndpoint{.name = "I", .uniqueID = 2, .coreMIDIObjectRef = gone}};
  cache.outputEndpoints = {MIDIOutputEndpoint{.name = "O", .uniqueID = 3, .coreMIDIObjectRef = gone}};
  const std::string letters = "DEIO";
  for (std::int32_t code = -1; code <= 20; ++code) {
    SCOPED_TRACE(code);
    const bool isKnown = code >= 0 && code < 20 && code % 16 < 4;
    const char kind = isKnown ? "DEOI"[code % 16] : '-';
    for (const auto* use :
         {static_cast<const MIDIIOObjectCache*>(nullptr), static_cast<const MIDIIOObjectCache*>(&cache)}) {
      const auto object = objectFor(*service, gone, code, use);
      ASSERT_EQ(object.has_value(), kind != '-');
      if (object) {
        EXPECT_EQ(letters[static_cast<std::size_t>(object->objectType())], kind);
        EXPECT_EQ(object->coreMIDIObjectRef(), gone);
        const bool isCached = use != nullptr && kind != 'E';
        EXPECT_EQ(object->name(), isCached ? std::string(1, kind) : "");
        EXPECT_EQ(object->uniqueID() != 0, isCached);
      }
      EXPECT_EQ(objectFor(*service, 0, code, use), std::nullopt);
    }
  }
  for (const std::int32_t code : {-2147483647 - 1, -2, 21, 32, 2147483647}) {
    EXPECT_EQ(objectFor(*service, gone, code), std::nullopt);
  }
}

TEST_F(ObjectsTest, WhatTheCacheDoesntHaveIsReadFromThePlatform) {
  const auto ref = service->addDevice(mixer());
  const MIDIIOObjectCache empty;
  EXPECT_EQ(objectFor(*service, ref, 0, &empty)->name(), "mixer");
  EXPECT_EQ(objectFor(*service, service->MIDIGetSource(2), 2, &empty)->uniqueID(), 200);
}

TEST_F(ObjectsTest, AThousandDevicesAreListedWithAFewCallsEach) {
  const auto callsFor = [this](std::size_t devices) {
    while (service->MIDIGetNumberOfDevices() < devices) {
      service->addDevice(simpleDevice("device"));
    }
    service->calls().resetCounts();
    EXPECT_EQ(systemDevices(*service).size(), devices);
    MIDIEndpoints().refresh(*service);
    return service->calls().total();
  };
  // A count of each list, then reference, name and ID of a device; an endpoint has a display name besides.
  const auto expected = [](std::size_t devices) { return 3 + devices * (3 + 2 * 4); };
  EXPECT_EQ(callsFor(500), expected(500));
  EXPECT_EQ(callsFor(1000), expected(1000));
}

}  // namespace
}  // namespace midikit::io
