#include "rig/ExpectedFlash.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace karvex::rig {
namespace {

class ExpectedFlashTest : public testing::Test {
 protected:
  ~ExpectedFlashTest() override { std::filesystem::remove(path_); }

  std::optional<std::vector<std::uint8_t>> flashOf(const std::string& text, const char* mcu = "TEENSY40") {
    std::ofstream(path_, std::ios::binary | std::ios::trunc) << text;
    return expectedFlash(path_, *findBoardKind(mcu));
  }

  std::filesystem::path path_ =
      std::filesystem::temp_directory_path() / ("karvex-flash-" + std::to_string(getpid()));
};

TEST_F(ExpectedFlashTest, DataLandWhereTheBoardHasThem) {
  const auto flash =
      flashOf(":020000046001 99\n:020000046001 99\n:0200000460019 9\n:02000004600199\n:0100050042B8\n");
  ASSERT_TRUE(flash);
  EXPECT_EQ((*flash)[0x10005], 0x42);
  EXPECT_EQ(std::ranges::count(*flash, 0xFF), 0x1F0000 - 1);
  const auto small = flashOf(":0100050042B8\n:01FFFF00FE03\n", "TEENSY2");
  ASSERT_TRUE(small);
  EXPECT_EQ((*small)[5], 0x42) << "what lies behind the flash is left out";
}

TEST_F(ExpectedFlashTest, DamagedFilesGiveNothing) {
  for (const char* text : {":0100050042B9\n", "\n", ":01000500 2B8\n", ":0200040000\n", ":0100050042\n"}) {
    EXPECT_FALSE(flashOf(text)) << text;
  }
  EXPECT_FALSE(expectedFlash("/nowhere.hex", *findBoardKind("TEENSY2")));
  EXPECT_FALSE(expectedFlash(std::filesystem::temp_directory_path(), *findBoardKind("TEENSY2")));
}

}  // namespace
}  // namespace karvex::rig
