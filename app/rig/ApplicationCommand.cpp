#include "app/rig/ApplicationCommand.hpp"

#include <fmt/format.h>

#include <cstdlib>
#include <fstream>
#include <memory>
#include <optional>
#include <utility>

#include "app/ScriptedUser.hpp"
#include "app/TerminalPage.hpp"
#include "app/rig/RigObjects.hpp"
#include "app/rig/RunReport.hpp"
#include "app/rig/WindowCommand.hpp"
#include "ui/Actions.hpp"
#include "ui/KarvexApp.hpp"
#include "ui/TerminationSignals.hpp"
#include "ui/console/LineFront.hpp"
#include "ui/console/TerminalMode.hpp"

namespace karvex::app {
namespace {

/// The application on the rig in a terminal: a page of it, or plain lines.
class FrontOnRig {
 public:
  FrontOnRig(const CommonOptions& common, const ApplicationOptions& options,
             RunRecorder::EndListener endListener)
      : options_(options), on_(common, options, std::move(endListener)) {
    if (common.realTime && ui::console::TerminalMode::isPossible()) {
      page_ = std::make_unique<TerminalPage>(
          on_.view, on_.actions, [this] { on_.runtime->stopMain(); }, common.showLog);
    } else {
      writeLines();
    }
  }

  ~FrontOnRig() {
    on_.runtime->finish();
    terminationSignals_.reset();
    page_.reset();
  }
  FrontOnRig(const FrontOnRig&) = delete;
  FrontOnRig& operator=(const FrontOnRig&) = delete;

  /// Gives what happened.
  RunRecord run() {
    const bool isScripted = options_.upgradeFrom.has_value();
    if (isScripted || !page_) {
      user_.emplace(
          *on_.runtime, on_.view,
          ScriptedUser::Plan{.firstRow = isScripted ? *options_.upgradeFrom - 1 : options_.equipment.boards,
                             .answersAlerts = options_.answersAlerts},
          [this] { on_.runtime->stopMain(); });
    }
    on_.actions.appear();
    on_.runtime->runMain();
    auto record = on_.recorder.record();
    record.hasGivenUp = user_ && user_->hasGivenUp();
    return record;
  }

 private:
  void writeLines() {
    lineFront_.emplace(on_.view, [](auto line) { say(std::string(line)); });
    terminationSignals_.emplace([this] {
      on_.runtime->mainQueue().post(
          [this] { lineFront_->quitWhenIdle([this] { on_.runtime->stopMain(); }); });
    });
  }

  const ApplicationOptions& options_;
  RigObjects on_;
  std::optional<ui::console::LineFront> lineFront_;
  std::optional<ui::TerminationSignals> terminationSignals_;  // For the line front; the page has its own.
  std::unique_ptr<TerminalPage> page_;
  std::optional<ScriptedUser> user_;
};

bool isUpgraded(const RunRecord::Board& board) {
  return board.bootReport && board.flashMatches && board.isReported;
}

std::string sentenceOf(const RunRecord::Board& board) {
  if (isUpgraded(board)) {
    return fmt::format("{} {}: upgraded: {}, its flash matches the file, and the service knows.{}", board.mcu,
                       board.serialNumber, counted(board.reports, "block"),
                       board.isBack ? "" : hasNotComeBack);
  }
  const auto* flash = board.flashMatches ? "its flash matches the file" : "its flash is not the file's";
  return fmt::format("{} {}: NOT UPGRADED: {}, {}; it is {}.", board.mcu, board.serialNumber, flash,
                     board.isReported ? "the service knows" : "the service was not told", board.state);
}

/// What became of the boards from the row on that the run began with.
struct Summary {
  std::string text;
  bool isAllWell = false;
};

Summary summaryOf(const RunRecord& record, std::size_t firstRow) {
  if (firstRow >= record.boards.size()) {
    return {.text = fmt::format("There is no row {}.", firstRow + 1)};
  }
  Summary summary;
  std::size_t upgraded = 0;
  for (std::size_t place = firstRow; place < record.boards.size(); ++place) {
    summary.text += sentenceOf(record.boards[place]) + '\n';
    upgraded += isUpgraded(record.boards[place]) ? 1U : 0U;
  }
  const auto wanted = record.boards.size() - firstRow;
  summary.text += fmt::format("{} of {} devices upgraded.", upgraded, wanted);
  summary.isAllWell = upgraded == wanted;
  return summary;
}

/// Said when the loader has ended the process, after the terminal has been given back. Never destroyed, as
/// other threads go on meanwhile.
std::string& lastWords() {
  static auto* const text = new std::string;
  return *text;
}

void sayLastWords() {
  if (!lastWords().empty()) {
    say(lastWords());
  }
}

}  // namespace

int runApplication(const CommonOptions& common, const ApplicationOptions& options) {
  std::ofstream report;
  if (!openResults(report, options.reportFile)) {
    return exitWrongUse;
  }
  const auto firstRow = options.upgradeFrom.value_or(1) - 1;
  const auto writeReport = [&](const RunRecord& record) {
    report << jsonOf(record);
    return closeResults(report, options.reportFile);
  };
  std::at_quick_exit(sayLastWords);  // Ahead of the terminal's own, so that it comes after that.
  const auto endListener = [&](const RunRecord& record) {
    writeReport(record);
    lastWords() = options.upgradeFrom ? summaryOf(record, firstRow).text : "";
  };
  const auto record = options.isInWindow ? runInWindow(common, options, endListener)
                                         : FrontOnRig(common, options, endListener).run();
  const bool isWritten = writeReport(record);
  bool isAllWell = isWritten && !record.hasGivenUp;
  if (record.hasGivenUp) {
    fmt::print(stderr, "karvex-rig: the alert comes back whatever is answered.\n");
  }
  if (options.upgradeFrom) {
    const auto summary = summaryOf(record, firstRow);
    say(summary.text);
    isAllWell = isAllWell && summary.isAllWell;
  }
  return isAllWell ? exitLoaded : exitLoadFailed;
}

}  // namespace karvex::app
