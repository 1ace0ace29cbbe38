// What can go wrong with a board, with the service, at which row, in which front: each run ends by itself
// with the exit status that is documented, sends a board nothing that a real one would stumble over, and
// leaves boards that the next run upgrades. Usually every pair of faults is met at one row in one front; with
// KARVEX_MATRIX=all in the environment, at all.

#include <gmock/gmock.h>
#include <stdlib.h>

#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "app/rig/ApplicationCommand.hpp"
#include "foundation/Log.hpp"
#include "foundation/files/TemporaryDirectory.hpp"
#include "loader/load_status.hpp"

namespace karvex::app {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr std::size_t boards = 3;

/// What a fault comes to, whatever else is wrong.
enum class End {
  upgraded,        ///< all boards are upgraded
  stopped,         ///< not all are
  upgradedByAnOk,  ///< all are, if somebody answers the alert
};

struct BoardFault {
  std::vector<std::string> faults;
  End end;
  const char* alert = "";          ///< the title of the first one, if nothing else is wrong
  const char* laterAlert = alert;  ///< at another row than the first
};

constexpr const char* complete = "Upgrade Procedure Complete";
constexpr const char* inBootloader = "Device already in programming mode";
constexpr const char* uploadError = "An error occurred during upload";

const std::vector<BoardFault>& boardFaults() {
  static const std::vector<BoardFault> faults = {
      {{}, End::upgraded, complete},
      {{"in-halfkay"}, End::upgradedByAnOk, inBootloader},
      {{"in-halfkay", "access-denied"}, End::stopped, inBootloader},
      {{"never-enters-halfkay"}, End::stopped, uploadError},
      {{"enters-late"}, End::upgraded, complete},
      {{"enters-late=40000"}, End::stopped, uploadError},
      {{"refuses"}, End::upgraded, complete},
      {{"refuses-for-good"}, End::stopped},
      {{"vanishes=0"}, End::stopped},
      {{"vanishes=1"}, End::stopped},
      {{"access-denied"}, End::stopped, "", inBootloader},
      {{"never-returns"}, End::upgraded, complete},
      {{"returns-late"}, End::upgraded, complete},
      {{"port-busy"}, End::stopped, "Device Port currently in use! "},
      {{"port-snatched"}, End::stopped, "Could not switch device to programming mode"},
  };
  return faults;
}

struct ServiceFault {
  std::string_view fault;
  End end;
};

constexpr ServiceFault serviceFaults[] = {
    {"", End::upgraded},
    {"slow", End::upgraded},
    {"silent", End::stopped},
    {"silent@firmware", End::stopped},
    {"silent@complete", End::upgraded},
    {"cut-off", End::stopped},
    {"cut-off@firmware", End::stopped},
    {"cut-off@complete", End::upgraded},
    {"wrong-certificate", End::stopped},
    {"endless@firmware", End::stopped},
    {"redirect-elsewhere", End::stopped},
    {"redirect-elsewhere@firmware", End::stopped},
    {"not-found", End::stopped},
    {"not-found@firmware", End::stopped},
    {"not-found@complete", End::upgraded},
    {"server-error@firmware", End::stopped},
    {"not-json", End::stopped},
    {"missing-key", End::stopped},
    {"null-value", End::stopped},
    {"wrong-type", End::stopped},
    {"out-of-range", End::stopped},
    {"empty-list", End::stopped},
};

struct Front {
  bool isInWindow;
  bool answersAlerts;
};

constexpr Front fronts[] = {{false, false}, {false, true}, {true, false}, {true, true}};

void addBoardFault(const std::string& fault, std::size_t place, EquipmentPlan& plan) {
  if (fault == "port-busy") {
    plan.occupied.insert(place);
  } else if (fault == "port-snatched") {
    plan.snatched.insert(place);
  } else {
    ASSERT_EQ(rig::addFault(fault, plan.faults[place]), std::nullopt);
  }
}

class RunMatrixTest : public testing::TestWithParam<std::size_t> {
 protected:
  RunMatrixTest() {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    setenv("XDG_RUNTIME_DIR", directory_.path().c_str(), 1);
    foundation::log::redirectSystem([](std::string_view) {});
    foundation::log::redirectPrint([](std::string_view) {});
    foundation::log::redirectDebug([](std::string_view) {});
  }
  ~RunMatrixTest() override {
    foundation::log::redirectSystem(nullptr);
    foundation::log::redirectPrint(nullptr);
    foundation::log::redirectDebug(nullptr);
  }

  /// The boards are those of the run before.
  int run(ApplicationOptions options) {
    loader::set_load_status(loader::LOAD_STATUS_IDLE);
    options.equipment.boards = boards;
    options.equipment.keptIn = directory_.path() / "boards";
    options.reportFile = directory_.path() / "report.json";
    options.upgradeFrom = 1;
    testing::internal::CaptureStdout();
    const int status = runApplication({.realTime = false}, options);
    output_ = testing::internal::GetCapturedStdout();
    std::ifstream file(*options.reportFile);
    report_.assign(std::istreambuf_iterator<char>(file), {});
    EXPECT_THAT(report_, Not(HasSubstr("complaint: ")));
    return status;
  }

  void meet(const BoardFault& board, const ServiceFault& service, std::size_t row, const Front& front) {
    SCOPED_TRACE(testing::Message() << '"' << service.fault << "\", row " << row + 1
                                    << (front.isInWindow ? ", window" : "")
                                    << (front.answersAlerts ? ", --yes" : ""));
    ApplicationOptions options{.answersAlerts = front.answersAlerts, .isInWindow = front.isInWindow};
    for (const auto& fault : board.faults) {
      addBoardFault(fault, row, options.equipment);
    }
    if (!service.fault.empty()) {
      ASSERT_EQ(rig::addServiceFault(service.fault, options.serviceFaults), std::nullopt);
    }
    const bool isUpgraded =
        service.end == End::upgraded &&
        (board.end == End::upgraded || (board.end == End::upgradedByAnOk && front.answersAlerts));
    EXPECT_EQ(run(options), isUpgraded ? exitLoaded : exitLoadFailed) << output_;
    const std::string alert = row == 0 ? board.alert : board.laterAlert;
    if (service.fault.empty() && !alert.empty()) {
      EXPECT_THAT(report_, HasSubstr("\"title\": \"" + alert + "\""));
    }
    EXPECT_EQ(run({.answersAlerts = true}), exitLoaded) << "the next run: " << output_;
  }

  foundation::TemporaryDirectory directory_;
  std::string output_;
  std::string report_;
};

TEST_P(RunMatrixTest, EndsAndLeavesBoardsForTheNextRun) {
  const bool isComplete = getenv("KARVEX_MATRIX") != nullptr;
  auto turn = GetParam();
  for (const auto& service : serviceFaults) {
    ++turn;
    for (std::size_t row = 0; row < boards; ++row) {
      for (std::size_t front = 0; front < std::size(fronts); ++front) {
        const bool isItsTurn = turn % (boards * std::size(fronts)) == row * std::size(fronts) + front;
        if (isComplete || isItsTurn || service.fault.empty()) {
          meet(boardFaults()[GetParam()], service, row, fronts[front]);
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(EachBoardFault, RunMatrixTest, testing::Range<std::size_t>(0, boardFaults().size()));

}  // namespace
}  // namespace karvex::app
