#include "app/rig/RigLoad.hpp"

#include <gmock/gmock.h>

#include <memory>

#include "app/rig/LoadReport.hpp"
#include "foundation/Log.hpp"
#include "foundation/VirtualRuntime.hpp"
#include "loader/load_status.hpp"

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

TEST_F(RigLoadTest, TheSameLoadGivesTheSameReportToTheByte) {
  const auto first = jsonOf(load({.refusesReportsFor = 333ms}));
  EXPECT_THAT(first, HasSubstr("\"event\": \"report 4\""));
  for (int repeat = 0; repeat < 3; ++repeat) {
    EXPECT_EQ(jsonOf(load({.refusesReportsFor = 333ms})), first);
  }
}

}  // namespace
}  // namespace karvex::app
