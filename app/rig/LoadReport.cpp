#include "app/rig/LoadReport.hpp"

#include <fmt/format.h>

#include <chrono>
#include <nlohmann/json.hpp>

#include "app/rig/RigSupport.hpp"
#include "loader/load.hpp"
#include "loader/load_status.hpp"

namespace karvex::app {
namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;

std::string reasonOf(const LoadOutcome& outcome) {
  if (outcome.result == loader::load_file_error) {
    return "The file can't be read as Intel HEX; what was printed above says why. Nothing was sent to the "
           "board.";
  }
  if (outcome.result == loader::load_permission_error) {
    return "The board is in its bootloader, but this user may not open it. Give yourself access and load "
           "again.";
  }
  if (outcome.result == loader::load_open_error) {
    return "No board came up in its bootloader. Press the button on the board, or plug it in again, and load "
           "again.";
  }
  if (outcome.loadStatus == loader::LOAD_STATUS_ERROR_PROGRAM) {
    return fmt::format(
        "The board stopped taking data at block {} of {}. Whatever it still is, its flash is not the file's: "
        "load "
        "it again.",
        outcome.reports + 1, outcome.blocksToSend);
  }
  if (!outcome.bootReport) {
    return "The board never took the report that reboots it. Plug it in again.";
  }
  return "The board's flash differs from the file. Load it again.";
}

/// The loader's own words for it, if it has any.
std::string failureOf(const LoadOutcome& outcome) {
  if (outcome.result != loader::load_started) {
    return outcome.result + ". ";
  }
  const bool hasSucceeded = outcome.loadStatus == loader::LOAD_STATUS_SUCCESS;
  return hasSucceeded ? "" : fmt::format("{}. ", loader::load_status_text(outcome.loadStatus));
}

}  // namespace

std::string jsonOf(const LoadOutcome& outcome) {
  auto timeline = nlohmann::ordered_json::array();
  for (const auto& entry : outcome.timeline) {
    timeline.push_back({{"at_ms", Milliseconds(entry.at - outcome.start).count()}, {"event", entry.event}});
  }
  const nlohmann::ordered_json document = {
      {"result", outcome.result},
      {"load_status", outcome.loadStatus},
      {"bytes_read", outcome.bytesRead},
      {"failed_opens", outcome.failedOpens},
      {"reports", outcome.reports},
      {"boot_report", outcome.bootReport},
      {"flash_matches", outcome.flashMatches},
      {"board", {{"serial", outcome.serialNumber}, {"mcu", outcome.mcu}, {"state", outcome.boardState}}},
      {"timeline", timeline},
  };
  // A name from the command line can be any bytes; what isn't UTF-8 must not keep the report from being
  // written.
  return document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n';
}

std::string sentenceOf(const LoadOutcome& outcome) {
  const auto board = fmt::format("{} {}", outcome.mcu, outcome.serialNumber);
  if (!outcome.isLoaded()) {
    return fmt::format("{}: FAILED: {}{}", board, failureOf(outcome), reasonOf(outcome));
  }
  auto loaded = fmt::format("{}: loaded: {} sent, board rebooted, its flash matches the file.", board,
                            counted(outcome.reports, "block"));
  return outcome.isBack ? loaded : loaded.append(hasNotComeBack);
}

}  // namespace karvex::app
