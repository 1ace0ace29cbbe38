#include "loader/halfkay_report.hpp"

#include <gmock/gmock.h>

#include <vector>

#include "loader/firmware_image.hpp"
#include "loader/mcu_table.hpp"

namespace karvex::loader {
namespace {

using testing::Each;
using testing::ElementsAre;

std::vector<std::uint8_t> block_report(const char* mcu, std::uint32_t address) {
  const auto* entry = find_mcu(mcu);
  const auto layout = layout_for(entry->code_size, entry->block_size);
  std::vector<std::uint8_t> report(layout->length, 0xEE);
  build_block_report(*layout, address, report);
  return report;
}

TEST(HalfkayReportTest, TheHeaderHoldsTheAddressAsTheTargetWantsIt) {
  struct HeaderCase {
    const char* mcu;
    std::uint32_t address;
    std::vector<std::uint8_t> address_bytes;
    std::size_t header;
    std::size_t length;
  };
  const HeaderCase header_cases[] = {
      {"at90usb162", 0x3D80, {0x80, 0x3D}, 2, 130},
      {"atmega32u4", 0x7D80, {0x80, 0x7D}, 2, 130},
      {"at90usb646", 0xFB00, {0x00, 0xFB}, 2, 258},
      {"at90usb1286", 0x1FB00, {0xFB, 0x01}, 2, 258},
      {"mkl26z64", 0xF600, {0x00, 0xF6, 0x00}, 64, 576},
      {"mk20dx256", 0x12400, {0x00, 0x24, 0x01}, 64, 1088},
      {"TEENSY_MICROMOD", 0xFBFC00, {0x00, 0xFC, 0xFB}, 64, 1088},
  };
  for (const auto& example : header_cases) {
    SCOPED_TRACE(example.mcu);
    note_written(example.address, 1);
    image_mask[example.address] = 1;
    image_bytes[example.address] = 0x5A;
    const auto report = block_report(example.mcu, example.address);
    ASSERT_EQ(report.size(), example.length);
    const auto header_end = report.begin() + static_cast<std::ptrdiff_t>(example.header);
    const auto address_end = report.begin() + static_cast<std::ptrdiff_t>(example.address_bytes.size());
    EXPECT_EQ(std::vector(report.begin(), address_end), example.address_bytes);
    EXPECT_THAT(std::vector(address_end, header_end), Each(0));
    EXPECT_EQ(*header_end, 0x5A);
    EXPECT_THAT(std::vector(header_end + 1, report.end()), Each(0xFF));
    clear_image();
  }
}

TEST(HalfkayReportTest, SizesThatNoTargetHasGiveNoLayout) {
  EXPECT_FALSE(layout_for(0x10000, 128));
  EXPECT_FALSE(layout_for(0x40000, 2048));
  EXPECT_FALSE(layout_for(0x8000, 300));
  EXPECT_TRUE(layout_for(0xFFFF, 64));
}

TEST(HalfkayReportTest, TheBootReportIsThreeFullBytesAndZeros) {
  std::vector<std::uint8_t> report(130, 0xEE);
  build_boot_report(report);
  EXPECT_THAT(std::vector(report.begin(), report.begin() + 4), ElementsAre(0xFF, 0xFF, 0xFF, 0));
  EXPECT_THAT(std::vector(report.begin() + 3, report.end()), Each(0));
}

}  // namespace
}  // namespace karvex::loader
