#include "app/rig/ProgressLine.hpp"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>

#include "loader/load_status.hpp"
#include "loader/programming_worker.hpp"

namespace karvex::app {
namespace {

constexpr std::uint32_t barWidth = 30;

/// The loader's own words, with a bar while blocks go out.
std::string stateOfLoad() {
  const auto status = loader::get_load_status();
  const auto* text = loader::load_status_text(status);
  const auto progress = loader::get_load_progress();
  if (status != loader::LOAD_STATUS_PROGRAMMING || progress.blocks_to_send == 0) {
    return text;
  }
  const auto filled = barWidth * progress.blocks_sent / progress.blocks_to_send;
  return fmt::format("{} [{}{}] {}/{} blocks", text, std::string(filled, '#'),
                     std::string(barWidth - filled, '.'), progress.blocks_sent, progress.blocks_to_send);
}

void writeOut(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fflush(stdout);
}

}  // namespace

ProgressLine::ProgressLine() : isTerminal_(isatty(STDOUT_FILENO) != 0) {}

void ProgressLine::show(const std::string& title) {
  if (!isTerminal_) {
    return;
  }
  auto text = fmt::format("{}: {}", title, stateOfLoad());
  const std::lock_guard lock(mutex_);
  if (text != shown_) {
    // Back to the first column, the new text, and nothing behind it (ECMA-48: CR, EL).
    writeOut("\r" + text + "\x1b[K");
    shown_ = std::move(text);
  }
}

void ProgressLine::clear() {
  const std::lock_guard lock(mutex_);
  if (!shown_.empty()) {
    writeOut("\r\x1b[K");
    shown_.clear();
  }
}

}  // namespace karvex::app
