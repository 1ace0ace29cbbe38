#include "ui/TerminationSignals.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <system_error>
#include <utility>

namespace karvex::ui {
namespace {

constexpr std::array terminationSignals{SIGINT, SIGTERM, SIGHUP};

/// Takes the place of a signal's number when the thread is to end.
constexpr unsigned char nobody = 0;

/// timeout(1) and service managers signal a process and then its group; a person needs longer for a second
/// try.
constexpr std::chrono::milliseconds sameRequest{500};

/// The shell's own way to tell of a signal.
constexpr int statusBase = 128;

/// The pipe's end for the handler, and what the signals did before. Written while no handler is installed.
std::atomic<int> notesTo = -1;
static_assert(std::atomic<int>::is_always_lock_free, "a handler reads it");
std::array<struct sigaction, terminationSignals.size()> before;

void leaveNote(unsigned char signal) {
  // A full pipe holds enough requests.
  [[maybe_unused]] const auto written = ::write(notesTo, &signal, 1);
}

/// Async-signal-safe: write is (POSIX.1-2017, 2.4.3).
void handle(int signal) {
  const int error = errno;
  leaveNote(static_cast<unsigned char>(signal));
  errno = error;
}

/// A terminal shows Ctrl-C as "^C" and stays in that line, where the shell's prompt would follow.
void endLineOfTerminal() {
  if (isatty(STDERR_FILENO) != 0) {
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, "\n", 1);
  }
}

std::optional<unsigned char> nextNote(int descriptor) {
  unsigned char signal = nobody;
  ssize_t length = 0;
  do {
    length = ::read(descriptor, &signal, 1);
  } while (length < 0 && errno == EINTR);
  return length == 1 && signal != nobody ? std::optional(signal) : std::nullopt;
}

}  // namespace

TerminationSignals::TerminationSignals(std::function<void()> ask) : ask_(std::move(ask)) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe");
  }
  descriptor_ = ends[0];
  notesTo = ends[1];
  ::fcntl(ends[1], F_SETFL, O_NONBLOCK);  // A handler must not wait.
  thread_ = std::thread([this] { run(); });
  for (std::size_t place = 0; place < terminationSignals.size(); ++place) {
    struct sigaction action{};
    action.sa_handler = handle;
    action.sa_flags = SA_RESTART;
    sigaction(terminationSignals[place], nullptr, &before[place]);
    if (before[place].sa_handler != SIG_IGN) {
      sigaction(terminationSignals[place], &action, nullptr);
    }
  }
}

TerminationSignals::~TerminationSignals() {
  for (std::size_t place = 0; place < terminationSignals.size(); ++place) {
    sigaction(terminationSignals[place], &before[place], nullptr);
  }
  leaveNote(nobody);
  thread_.join();
  ::close(notesTo.exchange(-1));
  ::close(descriptor_);
}

void TerminationSignals::run() {
  using Clock = std::chrono::steady_clock;  // Signals come in the machine's time, whatever the program's is.
  bool hasAsked = false;
  std::optional<Clock::time_point> first;
  while (const auto signal = nextNote(descriptor_)) {
    if (*signal == SIGINT) {
      endLineOfTerminal();
    }
    if (!std::exchange(hasAsked, true)) {
      ask_();
    }
    if (*signal == SIGHUP) {
      continue;  // It also comes with the others, from whoever takes a session down.
    }
    const auto now = Clock::now();
    if (!first) {
      first = now;
    } else if (now - *first >= sameRequest) {
      std::quick_exit(statusBase + *signal);
    }
  }
}

}  // namespace karvex::ui
