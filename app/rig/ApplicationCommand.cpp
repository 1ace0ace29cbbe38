#include "app/rig/ApplicationCommand.hpp"

#include <fmt/format.h>
#include <algorithm>
#include <fstream>
#include <memory>
#include <optional>

#include "app/TerminalPage.hpp"
#include "app/rig/RigPlatform.hpp"
#include "app/rig/RunRecorder.hpp"
#include "app/rig/RunReport.hpp"
#include "app/rig/ScriptedUser.hpp"
#include "app/rig/WindowCommand.hpp"
#include "ui/Actions.hpp"
#include "ui/EndSignals.hpp"
#include "ui/KarvexApp.hpp"
#include "ui/console/LineFront.hpp"
#include "ui/console/TerminalMode.hpp"

namespace karvex::app {
namespace {

/// The application's objects on the rig, and the front that shows them.
class RigApplication {
 public:
  RigApplication(const CommonOptions& common, const ApplicationOptions& options)
      : options_(options),
        runtime_(makeRuntime(common)),
        rig_(*runtime_, options.equipment, options.serviceFaults),
        app_(rig_.platform()),
        view_(rig_.platform(), app_),
        actions_(runtime_->mainQueue(), view_),
        recorder_(rig_, view_, options.equipment) {
    if (common.realTime && ui::console::TerminalMode::isPossible()) {
      page_ =
          std::make_unique<TerminalPage>(view_, actions_, [this] { runtime_->stopMain(); }, common.showLog);
    } else {
      writeLines(options);
    }
  }

  ~RigApplication() {
    runtime_->finish();
    endSignals_.reset();
    page_.reset();
  }
  RigApplication(const RigApplication&) = delete;
  RigApplication& operator=(const RigApplication&) = delete;

  /// Gives what happened.
  RunRecord run() {
    const bool isScripted = options_.upgradeFrom.has_value();
    if (isScripted || !page_) {
      user_.emplace(
          *runtime_, view_,
          ScriptedUser::Plan{.firstRow = isScripted ? *options_.upgradeFrom - 1 : options_.equipment.boards,
                             .answersAlerts = options_.answersAlerts},
          [this] { runtime_->stopMain(); });
    }
    actions_.appear();
    runtime_->runMain();
    return recorder_.record();
  }

 private:
  void writeLines(const ApplicationOptions& options) {
    lineFront_.emplace(view_, actions_,
                       ui::console::LineFront::Options{.answersAlerts = options.answersAlerts,
                                                       .write = [](auto line) { say(std::string(line)); }});
    endSignals_.emplace([this] {
      runtime_->mainQueue().post([this] { lineFront_->quitWhenIdle([this] { runtime_->stopMain(); }); });
    });
  }

  const ApplicationOptions& options_;
  std::unique_ptr<foundation::Runtime> runtime_;
  RigPlatform rig_;
  ui::KarvexApp app_;
  ui::ContentView view_;
  ui::Actions actions_;
  RunRecorder recorder_;
  std::optional<ui::console::LineFront> lineFront_;
  std::optional<ui::EndSignals> endSignals_;  // For the line front; the page has its own.
  std::unique_ptr<TerminalPage> page_;
  std::optional<ScriptedUser> user_;
};

bool isUpgraded(const RunRecord::Board& board) {
  return board.bootReport && board.flashMatches && board.isReported;
}

std::string sentenceOf(const RunRecord::Board& board) {
  if (isUpgraded(board)) {
    return fmt::format("{} {}: upgraded: {} blocks, its flash matches the file, and the service knows.",
                       board.mcu, board.serialNumber, board.reports);
  }
  const auto* flash = board.flashMatches ? "its flash matches the file" : "its flash is not the file's";
  return fmt::format("{} {}: NOT UPGRADED: {}, {}; it is {}.", board.mcu, board.serialNumber, flash,
                     board.isReported ? "the service knows" : "the service was not told", board.state);
}

/// What became of the boards from the row on that the run began with. True if all is well with all of them.
bool tellResults(const RunRecord& record, std::size_t firstRow) {
  std::size_t upgraded = 0;
  for (std::size_t place = firstRow; place < record.boards.size(); ++place) {
    say(sentenceOf(record.boards[place]));
    upgraded += isUpgraded(record.boards[place]) ? 1U : 0U;
  }
  const auto wanted = record.boards.size() - std::min(firstRow, record.boards.size());
  say(fmt::format("{} of {} devices upgraded.", upgraded, wanted));
  return wanted != 0 && upgraded == wanted;
}

}  // namespace

int runApplication(const CommonOptions& common, const ApplicationOptions& options) {
  std::ofstream report;
  if (options.reportFile) {
    report.open(*options.reportFile, std::ios::binary | std::ios::trunc);
    if (!report) {
      fmt::print(stderr, "karvex-rig: {} can't be written.\n", options.reportFile->string());
      return exitWrongUse;
    }
  }
  const auto record =
      options.isInWindow ? runInWindow(common, options) : RigApplication(common, options).run();
  if (report.is_open()) {
    report << jsonOf(record);
    report.close();
    if (!report) {
      fmt::print(stderr, "karvex-rig: {} could not be written to its end.\n", options.reportFile->string());
      return exitLoadFailed;
    }
  }
  if (!options.upgradeFrom) {
    return exitLoaded;
  }
  return tellResults(record, *options.upgradeFrom - 1) ? exitLoaded : exitLoadFailed;
}

}  // namespace karvex::app
