#include "ui/console/TerminalMode.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>

namespace karvex::ui::console {
namespace {

/// Those that end a process.
constexpr std::array endingSignals{SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGABRT};

// xterm's private modes, which every current terminal knows: the other page (1049) and the cursor (25).
constexpr std::string_view takeOver = "\x1b[?1049h\x1b[?25l";
constexpr std::string_view giveBack = "\x1b[?25h\x1b[?1049l";

/// How the terminal was. Written before `isTaken` is set, read by whoever takes that back.
struct Before {
  termios mode{};
  int standardError = -1;  ///< a copy of the terminal's descriptor; none if it was no terminal
  int heldBack = -1;       ///< what has been written to standard error
};
Before before;
std::atomic<bool> isTaken = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a handler sets it");

// The functions below are async-signal-safe, as what they call is (POSIX.1-2017, 2.4.3).

void writeTo(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const auto written = ::write(descriptor, text.data(), text.size());
    if (written < 0 && errno != EINTR) {
      return;  // A terminal that has gone shows as the end of standard input.
    }
    text.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
  }
}

void holdStandardErrorBack() {
  if (isatty(STDERR_FILENO) == 0) {
    return;
  }
  before.heldBack = memfd_create("standard error", MFD_CLOEXEC);
  before.standardError = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (before.heldBack >= 0 && before.standardError >= 0) {
    dup2(before.heldBack, STDERR_FILENO);
  }
}

void showHeldBack() {
  if (before.standardError >= 0) {
    dup2(before.standardError, STDERR_FILENO);
    ::close(before.standardError);
  }
  if (before.heldBack < 0) {
    return;
  }
  std::array<char, 512> piece;
  ssize_t length = 0;
  lseek(before.heldBack, 0, SEEK_SET);
  while ((length = ::read(before.heldBack, piece.data(), piece.size())) > 0) {
    writeTo(STDERR_FILENO, {piece.data(), static_cast<std::size_t>(length)});
  }
  ::close(before.heldBack);
}

void giveTerminalBack() {
  if (!isTaken.exchange(false)) {
    return;
  }
  writeTo(STDOUT_FILENO, giveBack);
  tcsetattr(STDIN_FILENO, TCSAFLUSH, &before.mode);
  showHeldBack();
}

void giveBackAndEnd(int signal) {
  giveTerminalBack();
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

/// Leaves what is handled already alone.
void replaceHandlers(void (*from)(int), void (*to)(int)) {
  for (const int signal : endingSignals) {
    struct sigaction action{};
    sigaction(signal, nullptr, &action);
    if (action.sa_handler == from) {
      action = {};
      action.sa_handler = to;
      sigaction(signal, &action, nullptr);
    }
  }
}

}  // namespace

bool TerminalMode::isPossible() {
  const char* kind = std::getenv("TERM");  // NOLINT(concurrency-mt-unsafe): nobody sets the environment
  return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0 && kind != nullptr &&
         std::string_view(kind) != "dumb";
}

TerminalMode::TerminalMode() {
  static const int registered = std::at_quick_exit(giveTerminalBack);
  static_cast<void>(registered);  // Without it, a program that ends early leaves the page.
  before = {};
  tcgetattr(STDIN_FILENO, &before.mode);
  holdStandardErrorBack();
  isTaken = true;
  replaceHandlers(SIG_DFL, giveBackAndEnd);
  auto mode = before.mode;
  mode.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ISIG);
  mode.c_cc[VMIN] = 0;
  mode.c_cc[VTIME] = 0;
  tcsetattr(STDIN_FILENO, TCSAFLUSH, &mode);
  write(takeOver);
}

TerminalMode::~TerminalMode() {
  giveTerminalBack();
  replaceHandlers(giveBackAndEnd, SIG_DFL);
}

void TerminalMode::write(std::string_view text) {
  if (isTaken) {
    writeTo(STDOUT_FILENO, text);
  }
}

}  // namespace karvex::ui::console
