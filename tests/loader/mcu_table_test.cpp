#include "loader/mcu_table.hpp"

#include "loader/ascii.hpp"
#include "loader/load_status.hpp"
#include "tests/loader/loader_fixture.hpp"

namespace karvex::loader {
namespace {

using McuTableTest = loader_fixture;

TEST_F(McuTableTest, ANameIsFoundInAnyLetterCaseAndOnlyWhole) {
  select_mcu("teensy_MicroMod");
  EXPECT_EQ(code_size, 16'515'072);
  EXPECT_EQ(block_size, 1024);
  select_mcu("AT90USB162");
  EXPECT_EQ(code_size, 15'872);
  EXPECT_EQ(block_size, 128);
  static_assert(is_same_ascii("TeEnSy_MicroMod", "teensy_mIcRoMOD"), "whatever the user's language is");
  for (const char* wrong : {"TEENSY", "TEENSY400", " TEENSY40", ""}) {
    EXPECT_EQ(find_mcu(wrong), nullptr) << wrong;
  }
}

TEST_F(McuTableTest, AnUnknownNameEndsTheProcessBehindTheListOfKnownOnes) {
  const std::pair<const char*, std::string> wrong[] = {
      {nullptr, "0 error No MCU specified.\n"},
      {"teensy5", "0 error Unknown MCU type \"0 error teensy50 error \"\n"},
  };
  for (const auto& [name, message] : wrong) {
    int exit_status = 0;
    const auto before = events().size();
    try {
      select_mcu(name);
    } catch (const process_ended& end) {
      exit_status = end.exit_status;
    }
    EXPECT_EQ(exit_status, 1);
    std::string said;
    auto all = events();
    all.erase(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(before));
    for (const auto& event : all) {
      said += event.find(" error ") != std::string::npos ? event : "";
    }
    EXPECT_EQ(said, message);
    EXPECT_EQ(all.size(), name == nullptr ? 23U : 25U);
  }
  EXPECT_THAT(printed(), testing::StartsWith("Supported MCUs are:\n - at90usb162\n - atmega32u4\n"));
  EXPECT_THAT(printed(), testing::EndsWith(" - TEENSY41\n - TEENSY_MICROMOD\n"));
}

}  // namespace
}  // namespace karvex::loader
