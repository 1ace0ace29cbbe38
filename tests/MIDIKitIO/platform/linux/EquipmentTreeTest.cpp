#include "MIDIKitIO/platform/linux/EquipmentTree.hpp"

#include <gmock/gmock.h>

#include <set>

#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"
#include "MIDIKitIO/platform/linux/DeviceMatch.hpp"

namespace midikit::io::alsa {
namespace {

using engine::MIDIObjectKind;
using testing::ElementsAre;

SequencerClient driver(int number, std::string name, int card, std::vector<SequencerPort> ports) {
  return {
      .number = number, .name = std::move(name), .isKernel = true, .card = card, .ports = std::move(ports)};
}

SequencerPort port(int number, std::string name, bool isReadable = true, bool isWritable = true) {
  return {number, std::move(name), isReadable, isWritable};
}

CardFacts boardOf(std::optional<std::string> serialNumber, std::string productId = "0485",
                  std::string path = "1-1") {
  return {.id = "Board",
          .usb = UsbFacts{.vendorId = "16c0",
                          .productId = std::move(productId),
                          .path = std::move(path),
                          .serialNumber = std::move(serialNumber),
                          .manufacturer = "Maker",
                          .product = "Product"}};
}

PropertyValue valueOf(const PropertyDictionary& properties, std::string_view key) {
  const auto found = properties.find(std::string(key));
  return found != properties.end() ? found->second : PropertyValue(PropertyDictionary());
}

TEST(EquipmentTreeTest, CardsAreDevicesAndOtherPortsAreEndpoints) {
  const auto equipment = equipmentOf(
      {
          {.number = 128,
           .name = "Program",
           .ports = {port(0, "out", true, false), port(1, "in", false, true)}},
          driver(20, "Board", 1, {port(1, "second", true, false), port(0, "first")}),
          {.number = 14, .name = "Midi Through", .isKernel = true, .ports = {port(0, "Midi Through Port-0")}},
          {.number = 0, .name = "System", .isKernel = true, .ports = {port(0, "Timer")}},
          {.number = 129, .name = "Ourselves", .ports = {port(0, "our source")}},
          {.number = 130, .name = "Secretive", .ports = {port(0, "private", false, false)}},
          driver(24, "Not ready", 2, {}),
      },
      {{1, boardOf("A1")}}, 129);
  ASSERT_EQ(equipment.devices.size(), 1U);
  const auto& device = equipment.devices.front();
  EXPECT_EQ(device.client, 20);
  EXPECT_THAT(device.ports, ElementsAre(0, 1));
  EXPECT_EQ(device.description.entities[0].destinations.size(), 1U);
  EXPECT_EQ(device.description.entities[1].destinations.size(), 0U);
  EXPECT_EQ(device.description.entities[1].sources.front().name, "second");

  std::vector<std::pair<PortAddress, MIDIObjectKind>> places;
  for (const auto& endpoint : equipment.endpoints) {
    places.emplace_back(endpoint.address, endpoint.kind);
  }
  EXPECT_THAT(places, ElementsAre(std::pair(PortAddress{14, 0}, MIDIObjectKind::source),
                                  std::pair(PortAddress{14, 0}, MIDIObjectKind::destination),
                                  std::pair(PortAddress{128, 0}, MIDIObjectKind::source),
                                  std::pair(PortAddress{128, 1}, MIDIObjectKind::destination)));
  EXPECT_EQ(valueOf(equipment.endpoints[0].description.properties, kMIDIPropertyDisplayName),
            PropertyValue("Midi Through Port-0"));
  EXPECT_EQ(valueOf(equipment.endpoints[2].description.properties, kMIDIPropertyDisplayName),
            PropertyValue("Program out"));
}

TEST(EquipmentTreeTest, AUsbDeviceGivesItsTextsToItsDevice) {
  const auto equipment = equipmentOf({driver(20, "Board", 1, {port(0, "first")})}, {{1, boardOf("A1")}}, 128);
  const auto& description = equipment.devices.at(0).description;
  EXPECT_EQ(description.name, "Board");
  EXPECT_EQ(valueOf(description.properties, serialNumberPropertyKey), PropertyValue("A1"));
  EXPECT_EQ(valueOf(description.sharedProperties, kMIDIPropertyManufacturer), PropertyValue("Maker"));
  EXPECT_EQ(valueOf(description.sharedProperties, kMIDIPropertyModel), PropertyValue("Product"));
  EXPECT_EQ(valueOf(description.sharedProperties, kMIDIPropertyOffline), PropertyValue(0));
}

/// Two looks at one card each, and whether it counts as the same device.
struct TwoLooks {
  const char* description;
  CardFacts before;
  CardFacts after;
  bool isSame;
};

TEST(EquipmentTreeTest, ABoardIsToldByItsSerialNumberOrElseByItsPlug) {
  const std::vector<TwoLooks> table = {
      {"other firmware, other plug", boardOf("A1"), boardOf("A1", "0489", "2-3"), true},
      {"another board in the same plug", boardOf("A1"), boardOf("A2"), false},
      {"a number that says nothing, other plug", boardOf("00000001"), boardOf("00000001", "0485", "2-3"),
       true},
      {"the same, another product", boardOf("00000001"), boardOf("00000001", "0489"), false},
      {"no number, same plug", boardOf({}), boardOf({}), true},
      {"no number, other plug", boardOf({}), boardOf({}, "0485", "1-2"), false},
      {"a number that can't be used is none", boardOf("\x01"), boardOf("\x02"), true},
      {"a card without USB", {.id = "VirMIDI"}, {.id = "VirMIDI"}, true},
      {"two of them", {.id = "VirMIDI"}, {.id = "VirMIDI_1"}, false},
  };
  for (const auto& row : table) {
    const auto before = equipmentOf({driver(20, "Board", 1, {port(0, "p")})}, {{1, row.before}}, 128);
    const auto after = equipmentOf({driver(31, "Board", 4, {port(0, "p")})}, {{4, row.after}}, 128);
    EXPECT_EQ(valueOf(before.devices.at(0).description.properties, kMIDIPropertyUniqueID) ==
                  valueOf(after.devices.at(0).description.properties, kMIDIPropertyUniqueID),
              row.isSame)
        << row.description;
  }
}

TEST(EquipmentTreeTest, EachDeviceIsTheKnownOneThatFitsItBest) {
  const auto keys = boardOf("00000001", "0001", "1-1");
  const auto twin = boardOf("00000001", "0001", "1-2");
  const auto pads = boardOf("00000001", "0002", "1-3");
  const auto real = boardOf("KX-0815", "0003", "1-4");
  const auto moved = boardOf("KX-0815", "0003", "1-5");
  const auto flashed = boardOf("KX-0815", "0004", "1-5");
  constexpr std::optional<std::size_t> isNew;
  const struct {
    const char* description;
    std::vector<CardFacts> known;
    std::vector<CardFacts> present;
    std::vector<std::optional<std::size_t>> expected;  ///< of each that is present the place in `known`
  } table[] = {
      {"twins are told by their plugs, whichever is found first", {keys, twin}, {twin, keys}, {1, 0}},
      {"a twin doesn't take the place of one that is there", {keys}, {twin, keys}, {isNew, 0}},
      {"another product with the same empty number", {keys}, {pads}, {isNew}},
      {"both of them", {keys, pads}, {pads, keys}, {1, 0}},
      {"at another plug", {keys}, {twin}, {0}},
      {"with other firmware at another plug", {real}, {flashed}, {0}},
      {"the best match goes first", {real, flashed}, {flashed, moved}, {1, 0}},
  };
  for (const auto& row : table) {
    std::vector<std::vector<std::string>> texts;
    const auto describe = [&texts](const std::vector<CardFacts>& cards) {
      for (const auto& card : cards) {
        texts.push_back(deviceKeys(driver(20, "Board", 1, {}), &card));
      }
    };
    describe(row.known);
    describe(row.present);
    std::vector<KnownDevice> all;
    for (const auto& text : texts) {
      all.push_back({.client = std::nullopt, .keys = text});
    }
    const auto known = std::span(all).first(row.known.size());
    EXPECT_EQ(matchDevices(known, std::span(all).subspan(known.size())), row.expected) << row.description;
  }
}

TEST(EquipmentTreeTest, WhatLooksAlikeStaysApart) {
  std::vector<SequencerClient> clients;
  for (int number = 20; number < 40; ++number) {
    clients.push_back(driver(number, "Board", 1, {port(0, "p"), port(1, "p")}));
    clients.push_back({.number = number + 108, .name = "Program", .ports = {port(0, "p")}});
  }
  const auto equipment = equipmentOf(clients, {{1, boardOf("A1")}}, 200);
  std::set<std::int32_t> ids;
  std::size_t objects = 0;
  const auto note = [&](const PropertyDictionary& properties) {
    ++objects;
    ids.insert(std::get<std::int32_t>(valueOf(properties, kMIDIPropertyUniqueID)));
  };
  for (const auto& device : equipment.devices) {
    note(device.description.properties);
    for (const auto& entity : device.description.entities) {
      note(entity.properties);
      note(entity.sources.at(0).properties);
      note(entity.destinations.at(0).properties);
    }
  }
  for (const auto& endpoint : equipment.endpoints) {
    note(endpoint.description.properties);
  }
  EXPECT_EQ(objects, 20U * 7 + 40U);
  EXPECT_EQ(ids.size(), objects);
}

TEST(EquipmentTreeTest, NamesFromOutsideAreMendedAndBounded) {
  EXPECT_EQ(readableText("Grüße 😀"), "Grüße 😀");
  EXPECT_EQ(readableText("a\n\x1B[31m\x7F\xC2\x85z"), "a\uFFFD\uFFFD[31m\uFFFD\uFFFDz");
  EXPECT_EQ(readableText("\xC3"), "\uFFFD");
  EXPECT_EQ(readableText("\xC0\x80x"), "\uFFFD\uFFFDx");
  EXPECT_EQ(readableText(std::string(5000, 'x')).size(), 126U);
}

TEST(EquipmentTreeTest, ASerialNumberIsTakenAsItIsOrNotAtAll) {
  EXPECT_EQ(usableSerialNumber("12345 Ä😀"), "12345 Ä😀");
  EXPECT_EQ(usableSerialNumber(std::string(126, '1')), std::string(126, '1'));
  for (const std::string& bad : {std::string(), std::string("1\n"), std::string("1\0", 2),
                                 std::string("\xFF"), std::string("\xC2\x9F"), std::string(127, '1')}) {
    EXPECT_EQ(usableSerialNumber(bad), std::nullopt) << bad.size();
  }
  std::string pairs;
  for (int count = 0; count < 64; ++count) {
    pairs += "😀";  // Two UTF-16 units each.
  }
  EXPECT_EQ(usableSerialNumber(pairs), std::nullopt);
}

}  // namespace
}  // namespace midikit::io::alsa
