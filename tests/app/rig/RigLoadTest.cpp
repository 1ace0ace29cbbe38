#include "app/rig/RigLoad.hpp"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>

#include "app/rig/LoadReport.hpp"
#include "foundation/Log.hpp"
#include "foundation/run/VirtualRuntime.hpp"
#include "loader/halfkay_report.hpp"
#include "loader/load_status.hpp"
#include "loader/mcu_table.hpp"

namespace karvex::app {
namespace {

using namespace std::chrono_literals;
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

  LoadOutcome load(rig::Faults faults = {}) {
    foundation::VirtualRuntime runtime;
    rig::VirtualBus bus(runtime.clock());
    bus.plugIn(std::make_unique<rig::VirtualBoard>(*rig::findBoardKind("TEENSYLC"), "42", faults));
    const LoadRequest request{
        .file = std::filesystem::path(KARVEX_FIRMWARE_DIRECTORY) / "led-ring.TEENSYLC.hex",
        .mcu = "teensylc",
        .serialNumber = "42",
        .onProgress = [this] { ++progressCalls; }};
    return runLoad(runtime, bus, request,
                   [](const LoadOutcome&) { FAIL() << "the process would have ended"; });
  }

  int progressCalls = 0;
};

TEST_F(RigLoadTest, EachFaultEndsAsItMustAndIsSaidInASentence) {
  struct FaultCase {
    rig::Faults faults;
    bool loaded;
    std::uint32_t status;
    const char* state;
    const char* sentence;
  };
  const FaultCase fault_cases[] = {
      {{}, true, loader::LOAD_STATUS_SUCCESS, "running", "5 blocks sent, board rebooted, its flash matches"},
      {{.neverEntersHalfKay = true},
       false,
       loader::LOAD_STATUS_IMPORT_FILE,
       "running",
       "Could not open Teensy"},
      {{.entersHalfKayAfter = 24s}, true, loader::LOAD_STATUS_SUCCESS, "running", "loaded"},
      {{.entersHalfKayAfter = 26s},
       false,
       loader::LOAD_STATUS_IMPORT_FILE,
       "switching",
       "Could not open Teensy"},
      {{.refusesReportsFor = 4s}, true, loader::LOAD_STATUS_SUCCESS, "running", "loaded"},
      {{.refusesReportsForGood = true},
       false,
       loader::LOAD_STATUS_ERROR_PROGRAM,
       "halfkay",
       "at block 1 of 5"},
      {{.vanishesAtBlock = 4}, false, loader::LOAD_STATUS_ERROR_PROGRAM, "gone", "at block 5 of 5"},
      {{.deniesAccess = true}, false, loader::LOAD_STATUS_ERROR_PERMISSION, "halfkay", "Permission denied"},
      {{.neverReturns = true}, true, loader::LOAD_STATUS_SUCCESS, "gone", "has not come back"},
      {{.returnsAfter = 6s}, true, loader::LOAD_STATUS_SUCCESS, "running", "loaded"},
  };
  for (const auto& example : fault_cases) {
    SCOPED_TRACE(example.sentence);
    const auto outcome = load(example.faults);
    EXPECT_EQ(outcome.isLoaded(), example.loaded);
    EXPECT_EQ(outcome.loadStatus, example.status);
    EXPECT_EQ(outcome.boardState, example.state);
    EXPECT_THAT(sentenceOf(outcome), HasSubstr(example.sentence));
    EXPECT_THAT(sentenceOf(outcome), HasSubstr("TEENSYLC 42"));
  }
  EXPECT_GT(progressCalls, 50);
}

TEST_F(RigLoadTest, ABoardThatHoldsSomethingElseThanTheFileIsNotLoaded) {
  const auto file = std::filesystem::temp_directory_path() / ("karvex-changing-" + std::to_string(getpid()));
  std::ofstream(file) << ":0100000042BD\n:00000001FF\n";
  foundation::VirtualRuntime runtime;
  rig::VirtualBus bus(runtime.clock());
  bus.plugIn(std::make_unique<rig::VirtualBoard>(*rig::findBoardKind("TEENSY2"), "42"));
  const LoadRequest request{.file = file, .mcu = "TEENSY2", .serialNumber = "42", .onProgress = [&file] {
                              if (loader::get_load_status() == loader::LOAD_STATUS_PROGRAMMING) {
                                std::ofstream(file) << ":0100000043BC\n:00000001FF\n";
                              }
                            }};
  const auto outcome = runLoad(runtime, bus, request, [](const LoadOutcome&) {});
  std::filesystem::remove(file);
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
  const auto file = std::filesystem::temp_directory_path() / ("karvex-random-" + std::to_string(getpid()));
  for (const auto& kind : rig::boardKinds()) {
    for (int turn = 0; turn < 12; ++turn) {
      SCOPED_TRACE(testing::Message() << kind.mcu << ", file " << turn);
      std::ofstream(file) << randomHex(random, kind);
      foundation::VirtualRuntime runtime;
      rig::VirtualBus bus(runtime.clock());
      auto& board = bus.plugIn(std::make_unique<rig::VirtualBoard>(kind, "42"));
      const auto outcome =
          runLoad(runtime, bus, {.file = file, .mcu = std::string(kind.mcu), .serialNumber = "42"},
                  [](const LoadOutcome&) {});
      EXPECT_TRUE(outcome.isLoaded()) << sentenceOf(outcome);
      EXPECT_THAT(board.complaints(), testing::IsEmpty());
    }
  }
  std::filesystem::remove(file);
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

TEST_F(RigLoadTest, TheSameLoadGivesTheSameReportToTheByte) {
  const auto first = jsonOf(load({.refusesReportsFor = 333ms}));
  EXPECT_THAT(first, HasSubstr("\"event\": \"report 4\""));
  for (int repeat = 0; repeat < 3; ++repeat) {
    EXPECT_EQ(jsonOf(load({.refusesReportsFor = 333ms})), first);
  }
}

}  // namespace
}  // namespace karvex::app
