#include "app/rig/ProgressLine.hpp"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
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
  const auto sent = std::min(progress.blocks_sent, progress.blocks_to_send);
  const auto filled = barWidth * sent / progress.blocks_to_send;
  return fmt::format("{} [{}{}] {}/{} blocks", text, std::string(filled, '#'),
                     std::string(barWidth - filled, '.'), progress.blocks_sent, progress.blocks_to_send);
}

/// A line that is wider than the terminal would wrap, and could not be drawn over.
std::size_t terminalWidth() {
  constexpr std::size_t usual = 80;
  winsize size{};
  const bool isKnown = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return isKnown ? size.ws_col : usual;
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
  text.resize(std::min(text.size(), terminalWidth() - 1));
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
