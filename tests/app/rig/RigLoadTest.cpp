#include "app/rig/RigLoad.hpp"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>

#include "app/rig/LoadReport.hpp"
#include "foundation/Log.hpp"
#include "foundation/files/TemporaryDirectory.hpp"
#include "foundation/run/VirtualRuntime.hpp"
#include "loader/halfkay_report.hpp"
#include "loader/load_status.hpp"
#include "loader/mcu_table.hpp"

namespace karvex::app {
namespace {

using testing::HasSubstr;

class RigLoadTest : public testing::Test {
 protected:
  RigLoadTest() {
    foundation::log::redirectSystem([](std::string_view) {});
    foundation::log::redirectPrint([](std::string_view) {});
  }
  ~RigLoadTest() override {
    foundation::log::redirectSystem(nullptr);
    foundation::log::redirectPrint(nullptr);
  }

  foundation::TemporaryDirectory directory_;
  const std::filesystem::path file_ = directory_.path() / "file.hex";
};

TEST_F(RigLoadTest, ABoardThatHoldsSomethingElseThanTheFileIsNotLoaded) {
  std::ofstream(file_) << ":0100000042BD\n:00000001FF\n";
  foundation::VirtualRuntime runtime;
  rig::VirtualBus bus(runtime.clock());
  bus.plugIn(std::make_unique<rig::VirtualBoard>(*rig::findBoardKind("TEENSY2"), "42"));
  const LoadRequest request{.file = file_, .mcu = "TEENSY2", .serialNumber = "42", .onProgress = [this] {
                              if (loader::get_load_status() == loader::LOAD_STATUS_PROGRAMMING) {
                                std::ofstream(file_) << ":0100000043BC\n:00000001FF\n";
                              }
                            }};
  const auto outcome = runLoad(runtime, bus, request, [](const LoadOutcome&) {});
  EXPECT_EQ(outcome.loadStatus, loader::LOAD_STATUS_SUCCESS);
  EXPECT_FALSE(outcome.flashMatches);
  EXPECT_FALSE(outcome.isLoaded());
  EXPECT_THAT(sentenceOf(outcome), HasSubstr("FAILED: The board's flash differs from the file."));
}

/// Firmware by chance: pieces that overlap, end at the edges of blocks, are blank or reach beyond the flash.
std::string randomHex(std::mt19937& random, const rig::BoardKind& kind) {
  std::string text;
  std::uint32_t upper = 0;
  for (auto pieces = random() % 8; pieces > 0; --pieces) {
    const auto edge = random() % (kind.flashSize / kind.blockSize + 1) * kind.blockSize;
    auto address = static_cast<std::uint32_t>(std::min(edge + random() % 5, 0xFFFD00UL));
    const auto fill = random() % 3 == 0 ? 0xFFU : random() % 256;
    for (auto records = random() % 40 + 1; records > 0; --records, address += 16) {
      if (address >> 16U != upper) {
        upper = address >> 16U;
        text += fmt::format(":02000004{:04X}{:02X}\n", upper, (0x100 - (6 + (upper >> 8U) + upper)) & 0xFFU);
      }
      const auto sum = 16 + ((address >> 8U) & 0xFFU) + (address & 0xFFU) + 16 * fill;
      text += fmt::format(":10{:04X}00", address & 0xFFFFU);
      for (int i = 0; i < 16; ++i) {
        text += fmt::format("{:02X}", fill);
      }
      text += fmt::format("{:02X}\n", (0x100 - (sum & 0xFFU)) & 0xFFU);
    }
  }
  return text + ":00000001FF\n";
}

TEST_F(RigLoadTest, WhateverIsLoadedTheBoardHoldsWhatItReadsInTheFileItself) {
  std::mt19937 random(1);
  for (const auto& kind : rig::boardKinds()) {
    for (int turn = 0; turn < 12; ++turn) {
      SCOPED_TRACE(testing::Message() << kind.mcu << ", file " << turn);
      std::ofstream(file_) << randomHex(random, kind);
      foundation::VirtualRuntime runtime;
      rig::VirtualBus bus(runtime.clock());
      auto& board = bus.plugIn(std::make_unique<rig::VirtualBoard>(kind, "42"));
      const auto outcome =
          runLoad(runtime, bus, {.file = file_, .mcu = std::string(kind.mcu), .serialNumber = "42"},
                  [](const LoadOutcome&) {});
      EXPECT_TRUE(outcome.isLoaded()) << sentenceOf(outcome);
      EXPECT_THAT(board.complaints(), testing::IsEmpty());
    }
  }
}

TEST(LoaderAndBoards, AgreeOnTheSizesOfEveryMicrocontroller) {
  for (const auto& mcu : loader::mcu_table()) {
    const auto* kind = rig::findBoardKind(mcu.name);
    ASSERT_NE(kind, nullptr) << mcu.name;
    EXPECT_EQ(kind->flashSize, static_cast<std::uint32_t>(mcu.code_size)) << mcu.name;
    EXPECT_EQ(kind->blockSize, static_cast<std::uint32_t>(mcu.block_size)) << mcu.name;
    EXPECT_EQ(kind->reportLength(), loader::report_length(mcu.block_size)) << mcu.name;
  }
}

}  // namespace
}  // namespace karvex::app
