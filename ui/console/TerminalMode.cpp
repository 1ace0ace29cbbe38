#include "ui/console/TerminalMode.hpp"

#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <string_view>

namespace karvex::ui::console {
namespace {

constexpr std::array endingSignals{SIGINT, SIGTERM, SIGHUP, SIGQUIT};

// xterm's private modes, which every current terminal knows: the other page (1049) and the cursor (25).
constexpr std::string_view takeOver = "\x1b[?1049h\x1b[?25l";
constexpr std::string_view giveBack = "\x1b[?25h\x1b[?1049l";

termios modeToRestore;  // Written before the handlers are installed, read by them.

void writeOut(std::string_view text) {
  // Nothing can be done about a terminal that has gone.
  [[maybe_unused]] const auto written = ::write(STDOUT_FILENO, text.data(), text.size());
}

/// Async-signal-safe: tcsetattr, write and raise are (POSIX.1-2017, 2.4.3).
void restoreAndEnd(int signal) {
  tcsetattr(STDIN_FILENO, TCSAFLUSH, &modeToRestore);
  writeOut(giveBack);
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

}  // namespace

bool TerminalMode::isPossible() {
  const char* kind = std::getenv("TERM");  // NOLINT(concurrency-mt-unsafe): nobody sets the environment
  return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0 && kind != nullptr &&
         std::string_view(kind) != "dumb";
}

TerminalMode::TerminalMode() {
  tcgetattr(STDIN_FILENO, &before_);
  modeToRestore = before_;
  for (const int signal : endingSignals) {
    std::signal(signal, restoreAndEnd);
  }
  auto mode = before_;
  mode.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ISIG);
  mode.c_cc[VMIN] = 0;
  mode.c_cc[VTIME] = 0;
  tcsetattr(STDIN_FILENO, TCSAFLUSH, &mode);
  writeOut(takeOver);
}

TerminalMode::~TerminalMode() {
  tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
  writeOut(giveBack);
  for (const int signal : endingSignals) {
    std::signal(signal, SIG_DFL);
  }
}

}  // namespace karvex::ui::console
