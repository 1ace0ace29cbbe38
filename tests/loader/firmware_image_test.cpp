#include "loader/firmware_image.hpp"

#include <gmock/gmock.h>

#include <vector>

namespace karvex::loader {
namespace {

class FirmwareImageTest : public testing::Test {
 protected:
  FirmwareImageTest() {
    write(0x000, 0x00);
    write(0xFFFFFD, 0x00);
    clear_image();
  }

  static void write(std::size_t address, std::uint8_t byte) {
    note_written(address, 1);
    image_bytes[address] = byte;
    image_mask[address] = 1;
  }
  static std::vector<std::uint8_t> copy(std::uint32_t address, std::uint32_t length) {
    std::vector<std::uint8_t> bytes(length, 0xEE);
    copy_block(address, length, bytes.data());
    return bytes;
  }
};

TEST_F(FirmwareImageTest, ABlockHasDataWhereTheFileWroteAndIsBlankWhereThatIsErasedFlash) {
  write(0x0FF, 0xFF);
  write(0x1FF, 0x00);
  EXPECT_FALSE(block_has_data(0x000, 0xFF));
  EXPECT_TRUE(block_is_blank(0x000, 0xFF));
  EXPECT_TRUE(block_has_data(0x000, 0x100));
  EXPECT_TRUE(block_is_blank(0x000, 0x100));
  EXPECT_TRUE(block_has_data(0x100, 0x100));
  EXPECT_FALSE(block_is_blank(0x100, 0x100));
  EXPECT_TRUE(block_is_blank(0x1FF, 0));
}

TEST_F(FirmwareImageTest, RangesEndAtTheEndOfThePicture) {
  write(0xFFFFFF, 0x12);
  EXPECT_TRUE(block_has_data(0xFFFF00, 0x1000));
  EXPECT_FALSE(block_is_blank(0xFFFF00, 0xFFFFFFFF));
  EXPECT_FALSE(block_has_data(0x1000000, 0x100));
  EXPECT_TRUE(block_is_blank(0xFFFFFFFF, 0xFFFFFFFF));
}

TEST_F(FirmwareImageTest, ACopyThatReachesTheEndIsErasedFlash) {
  write(0xFFFFFC, 0x12);
  write(0xFFFFFE, 0x34);
  EXPECT_THAT(copy(0xFFFFFC, 3), testing::ElementsAre(0x12, 0xFF, 0x34));
  EXPECT_THAT(copy(0xFFFFFC, 4), testing::Each(0xFF));
  EXPECT_THAT(copy(0xFFFFFFF0, 0x20), testing::Each(0xFF));
}

}  // namespace
}  // namespace karvex::loader
