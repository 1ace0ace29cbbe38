#include "app/rig/LoadCommands.hpp"

#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <memory>

#include "app/rig/Equipment.hpp"
#include "app/rig/LoadReport.hpp"
#include "app/rig/ProgressLine.hpp"
#include "app/rig/RigLoad.hpp"
#include "foundation/Log.hpp"
#include "rig/BoardKind.hpp"
#include "rig/VirtualBoard.hpp"

namespace karvex::app {
namespace {

/// On a terminal the log would run over the progress, so only its failures are shown unless all of it is
/// wanted; in a file or a pipe it is complete.
void chooseLogPlace(const CommonOptions& common, ProgressLine& progress) {
  if (isatty(STDERR_FILENO) == 0) {
    return;
  }
  foundation::log::redirectSystem([&progress, showAll = common.showLog](std::string_view text) {
    if (showAll || text.starts_with(">>>")) {
      progress.clear();
      fmt::print(stderr, "{}\n", text);
    }
  });
}

/// Each report as it reached the board: its length in 32 bits, lowest byte first, and its bytes.
void writeFramed(std::ostream& out, std::span<const std::uint8_t> report) {
  const auto length = static_cast<std::uint32_t>(report.size());
  std::array<char, 4> frame;
  for (std::size_t i = 0; i < frame.size(); ++i) {
    frame[i] = static_cast<char>(length >> (8 * i));
  }
  out.write(frame.data(), frame.size());
  out.write(reinterpret_cast<const char*>(report.data()), static_cast<std::streamsize>(report.size()));
}

bool isSameFile(const std::filesystem::path& one, const std::filesystem::path& other) {
  std::error_code error;
  return std::filesystem::equivalent(one, other, error) ||
         std::filesystem::weakly_canonical(one, error) == std::filesystem::weakly_canonical(other, error);
}

/// Why the file can't be loaded here; empty if it can. What isn't there, and a directory, is for the loader
/// to complain about.
std::string objectionTo(const ProgramOptions& options) {
  std::error_code error;
  if (std::filesystem::is_other(options.file, error)) {
    return fmt::format(
        "{} is no regular file. It is read twice, by the loader and to check the board's flash, so a pipe "
        "won't do.",
        options.file.string());
  }
  for (const auto& results : {options.reportsFile, options.reportFile}) {
    if (results && isSameFile(options.file, *results)) {
      return fmt::format("{} is the file to load; the results would overwrite it.", results->string());
    }
  }
  if (options.reportsFile && options.reportFile && isSameFile(*options.reportsFile, *options.reportFile)) {
    return fmt::format("{} can't be the file of the reports and that of the report.",
                       options.reportFile->string());
  }
  return {};
}

/// Lets the progress line follow the load.
LoadRequest withProgress(LoadRequest request, ProgressLine& progress) {
  request.onProgress = [&progress, title = fmt::format("{} {}", request.mcu, request.serialNumber)] {
    progress.show(title);
  };
  request.beforeText = [&progress] { progress.clear(); };
  return request;
}

}  // namespace

int runProgram(const CommonOptions& common, const ProgramOptions& options) {
  if (const auto objection = objectionTo(options); !objection.empty()) {
    fmt::print(stderr, "karvex-rig: {}\n", objection);
    return exitWrongUse;
  }
  std::ofstream reports;
  std::ofstream report;
  if (!openResults(reports, options.reportsFile) || !openResults(report, options.reportFile)) {
    return exitWrongUse;
  }
  ProgressLine progress;
  chooseLogPlace(common, progress);
  const auto runtime = makeRuntime(common);
  rig::VirtualBus bus(runtime->clock());
  LoadRequest request{.file = options.file, .mcu = options.mcu, .serialNumber = ""};
  if (const auto* kind = rig::findBoardKind(options.mcu)) {
    request.serialNumber = serialNumberOf(0);
    auto& board =
        bus.plugIn(std::make_unique<rig::VirtualBoard>(*kind, request.serialNumber, options.faults));
    if (reports.is_open()) {
      board.setReportListener(
          [&reports](std::span<const std::uint8_t> bytes) { writeFramed(reports, bytes); });
    }
  }
  const auto writeReport = [&report](const LoadOutcome& outcome) {
    if (report.is_open()) {
      report << jsonOf(outcome) << std::flush;
    }
  };
  const auto outcome = runLoad(*runtime, bus, withProgress(request, progress), writeReport);
  progress.clear();
  writeReport(outcome);
  const bool reportsAreWritten = closeResults(reports, options.reportsFile);
  const bool reportIsWritten = closeResults(report, options.reportFile);
  say(sentenceOf(outcome));
  return outcome.isLoaded() && reportsAreWritten && reportIsWritten ? exitLoaded : exitLoadFailed;
}

}  // namespace karvex::app
