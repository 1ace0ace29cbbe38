#include "MIDIKitCore/SysExID.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "MIDIKitCore/SysExManufacturerTable.hpp"

namespace midikit::core {
namespace {

using namespace literals;

std::vector<std::uint8_t> bytes7Of(const SysExID& id) {
  const auto bytes = id.bytes7();
  return {bytes.begin(), bytes.end()};
}

std::optional<SysExID> fromBytes7(const std::vector<std::uint8_t>& bytes) {
  return SysExID::fromBytes7(bytes);
}

TEST(SysExIDTest, EveryPairIsReadAsAnEightBitFormOrRefused) {
  int valid = 0;
  for (int a = 0; a <= 0xFF; ++a) {
    for (int b = 0; b <= 0xFF; ++b) {
      const auto first = static_cast<std::uint8_t>(a);
      const auto second = static_cast<std::uint8_t>(b);
      const bool isValid = a == 0 ? b >= 1 && b <= 0x7F : a >= 0x80 && b < 0x80;
      const auto id = SysExID::fromBytes8(first, second);
      ASSERT_EQ(id.has_value(), isValid) << a << ' ' << b;
      if (!id) {
        continue;
      }
      ++valid;
      ASSERT_EQ(id->bytes8(), (std::array{first, second}));
      ASSERT_EQ(fromBytes7(bytes7Of(*id)), id) << "the two forms differ";
      ASSERT_EQ(SysExManufacturer::fromBytes8(first, second), id->manufacturer());
    }
  }
  EXPECT_EQ(valid, 125 + 2 + 128 * 128);
}

TEST(SysExIDTest, ReadsTheSevenBitForm) {
  for (int byte = 0; byte <= 0xFF; ++byte) {
    const auto value = static_cast<std::uint8_t>(byte);
    const auto id = fromBytes7({value});
    ASSERT_EQ(id.has_value(), byte >= 1 && byte <= 0x7F) << byte;
    ASSERT_EQ(id && id->universal(), byte == 0x7E || byte == 0x7F) << byte;
    const auto manufacturer = SysExManufacturer::fromBytes7(std::span(&value, 1));
    ASSERT_EQ(manufacturer.has_value(), byte >= 1 && byte <= 125) << byte;
    ASSERT_EQ(fromBytes7({0, value, 5}).has_value(), byte < 0x80);
    ASSERT_EQ(fromBytes7({0, 5, value}).has_value(), byte < 0x80);
    ASSERT_EQ(fromBytes7({value, 1, 1}).has_value(), byte == 0);
  }
  EXPECT_FALSE(fromBytes7({}));
  EXPECT_FALSE(fromBytes7({0x41, 0x42}));
  EXPECT_FALSE(fromBytes7({0, 1, 2, 3}));
  EXPECT_EQ(universalSysExType(0x7D), std::nullopt);
}

TEST(SysExIDTest, ComparesTheCaseAndItsFields) {
  const auto oneByte = SysExManufacturer::oneByte(0x41_u7);
  EXPECT_NE(oneByte, SysExManufacturer::threeByte(0x41_u7, 0_u7));
  EXPECT_NE(oneByte, SysExManufacturer::threeByte(0_u7, 0x41_u7));
  EXPECT_NE(SysExManufacturer::threeByte(1_u7, 2_u7), SysExManufacturer::threeByte(2_u7, 1_u7));
  EXPECT_EQ(SysExID::manufacturer(oneByte), SysExID::manufacturer(oneByte));
  EXPECT_NE(SysExID::universal(UniversalSysExType::realTime),
            SysExID::universal(UniversalSysExType::nonRealTime));
}

TEST(SysExIDTest, HasATextForPeople) {
  const auto threeByte = SysExManufacturer::threeByte(0x21_u7, 0x09_u7);
  EXPECT_EQ(threeByte.description(), "0x00 0x21 0x09");
  EXPECT_EQ(SysExID::manufacturer(SysExManufacturer::oneByte(0xA_u7)).description(), "manufacturer(0x0A)");
  EXPECT_EQ(SysExID::universal(UniversalSysExType::realTime).description(), "universal(realTime)");
  EXPECT_EQ(SysExID::universal(UniversalSysExType::nonRealTime).description(), "universal(nonRealTime)");
}

TEST(SysExManufacturerDeathTest, AOneByteIDOutsideItsRangeStopsTheProgram) {
  EXPECT_DEATH(SysExManufacturer::oneByte(0_u7), "at least 1");
  EXPECT_DEATH(SysExManufacturer::oneByte(0x7E_u7), "at most 125");
}

TEST(SysExManufacturerTableTest, HasTheRowsOfTheList) {
  const auto rows = sysExManufacturers();
  EXPECT_EQ(rows.size(), 631U);
  EXPECT_EQ(std::ranges::count_if(rows, &SysExManufacturer::isOneByte, &SysExManufacturerRow::manufacturer),
            86);
  EXPECT_EQ(rows.front().name, "-");
  EXPECT_EQ(laterSysExManufacturers().size(), 160U);
}

TEST(SysExManufacturerTableTest, FindsEachRowAndNothingElse) {
  int found = 0;
  const auto look = [&found](SysExManufacturer manufacturer) {
    const auto name = manufacturerName(manufacturer);
    EXPECT_NE(name, "") << manufacturer.description();
    found += name ? 1 : 0;
  };
  for (int id = 1; id <= 125; ++id) {
    look(SysExManufacturer::oneByte(UInt7(id)));
  }
  for (int pair = 0; pair < 128 * 128; ++pair) {
    look(SysExManufacturer::threeByte(UInt7(pair / 128), UInt7(pair % 128)));
  }
  EXPECT_EQ(found, 631 + 160);
  for (const auto table : {sysExManufacturers(), laterSysExManufacturers()}) {
    for (const auto& row : table) {
      EXPECT_EQ(manufacturerName(row.manufacturer), row.name);
    }
  }
}

TEST(SysExManufacturerTableTest, NamesAreTheListsOwn) {
  const struct {
    std::vector<std::uint8_t> key;
    std::optional<std::string_view> name;
  } cases[] = {
      {{0x7D}, "-"},
      {{0x01}, "Sequential Circuits"},
      {{0x04}, "Moog Music"},
      {{0x00, 0x00, 0x01}, "Time/Warner Interactive"},
      {{0x00, 0x01, 0x00}, "Shure Incorporated"},
      {{0x00, 0x02, 0x00}, "Miselu Inc"},
      {{0x00, 0x20, 0x00}, "Dream SAS"},
      {{0x00, 0x20, 0x04}, "B\u00F6hm electronic GmbH"},
      {{0x00, 0x20, 0x7A}, "\"MIDI-hardware\" R.Sowa"},
      {{0x00, 0x21, 0x09}, "Native Instruments"},
      {{0x00, 0x40, 0x00}, "Crimson Technology Inc."},
      {{0x00, 0x48, 0x00}, "sigboost Co., Ltd."},
      {{0x00, 0x48, 0x01}, "Lost Technology"},
      {{0x00, 0x7F, 0x7F}, std::nullopt},
      {{0x00, 0x21, 0x5F}, std::nullopt},
  };
  for (const auto& [key, name] : cases) {
    const auto manufacturer = SysExManufacturer::fromBytes7(key);
    ASSERT_TRUE(manufacturer);
    EXPECT_EQ(manufacturerName(*manufacturer), name) << manufacturer->description();
  }
}

}  // namespace
}  // namespace midikit::core
