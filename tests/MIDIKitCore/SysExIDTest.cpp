#include "MIDIKitCore/sysex/SysExID.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "MIDIKitCore/sysex/SysExManufacturerTable.hpp"
#include "tests/MIDIKitCore/Events.hpp"

namespace midikit::core {
namespace {

using namespace literals;

Bytes bytes7Of(const SysExID& id) {
  const auto bytes = id.bytes7();
  return {bytes.begin(), bytes.end()};
}

std::optional<SysExID> fromBytes7(const Bytes& bytes) {
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
    ASSERT_EQ(SysExManufacturer::fromBytes7(std::span(&value, 1)).has_value(), byte >= 1 && byte <= 0x7D);
    ASSERT_EQ(fromBytes7({0, value, 5}).has_value(), byte < 0x80);
    ASSERT_EQ(fromBytes7({0, 5, value}).has_value(), byte < 0x80);
    ASSERT_EQ(fromBytes7({value, 1, 1}).has_value(), byte == 0);
  }
  for (const auto& bytes : {bytesOf(""), bytesOf("41 42"), bytesOf("00 01 02 03")}) {
    EXPECT_FALSE(fromBytes7(bytes));
  }
}

TEST(SysExIDTest, ComparesTheCaseAndItsFieldsAndHasATextForEach) {
  const auto manufacturer = [](const std::string& bytes) {
    return SysExID::manufacturer(*SysExManufacturer::fromBytes7(bytesOf(bytes)));
  };
  const struct {
    SysExID id;
    std::string text;
  } rows[] = {{manufacturer("0A"), "manufacturer(0x0A)"},
              {manufacturer("00 0A 00"), "manufacturer(0x00 0x0A 0x00)"},
              {manufacturer("00 00 0A"), "manufacturer(0x00 0x00 0x0A)"},
              {SysExID::universal(UniversalSysExType::realTime), "universal(realTime)"},
              {SysExID::universal(UniversalSysExType::nonRealTime), "universal(nonRealTime)"}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.id.description(), row.text);
    for (const auto& other : rows) {
      EXPECT_EQ(row.id == other.id, &row == &other) << row.text << other.text;
    }
  }
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

TEST(SysExManufacturerTableTest, FindsEachNameByItsNumberAndNothingElse) {
  std::string all;
  const auto look = [&all](SysExManufacturer manufacturer) {
    if (const auto name = manufacturerName(manufacturer)) {
      all.append(manufacturer.description()).append(" ").append(*name).append("\n");
    }
  };
  for (int id = 1; id <= 125; ++id) {
    look(SysExManufacturer::oneByte(UInt7(id)));
  }
  for (int pair = 0; pair < 128 * 128; ++pair) {
    look(SysExManufacturer::threeByte(UInt7(pair / 128), UInt7(pair % 128)));
  }
  EXPECT_EQ(std::ranges::count(all, '\n'), 631 + 160);
  EXPECT_EQ(digestOf(all), 12900790419858768441U) << all;
  for (const std::string line :
       {"0x01 Sequential Circuits", "0x04 Moog Music", "0x7D -", "0x00 0x00 0x01 Time/Warner Interactive",
        "0x00 0x01 0x00 Shure Incorporated", "0x00 0x02 0x00 Miselu Inc", "0x00 0x20 0x00 Dream SAS",
        "0x00 0x20 0x04 B\u00F6hm electronic GmbH", "0x00 0x21 0x09 Native Instruments",
        "0x00 0x40 0x00 Crimson Technology Inc.", "0x00 0x48 0x00 sigboost Co., Ltd."}) {
    EXPECT_NE(all.find(line + "\n"), std::string::npos) << line;
  }
}

}  // namespace
}  // namespace midikit::core
