#include "ui/console/ResizeSignal.hpp"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>

namespace karvex::ui::console {
namespace {

std::atomic<int> descriptor = -1;
static_assert(std::atomic<int>::is_always_lock_free, "a handler reads it");

/// Async-signal-safe: write is (POSIX.1-2017, 2.4.3).
void handle(int) {
  const int error = errno;
  const std::uint64_t one = 1;
  [[maybe_unused]] const auto written = ::write(descriptor, &one, sizeof one);
  errno = error;
}

}  // namespace

ResizeSignal::ResizeSignal(int eventDescriptor) {
  descriptor = eventDescriptor;
  struct sigaction action{};
  action.sa_handler = handle;
  action.sa_flags = SA_RESTART;
  sigaction(SIGWINCH, &action, &before_);
}

ResizeSignal::~ResizeSignal() {
  sigaction(SIGWINCH, &before_, nullptr);
}

}  // namespace karvex::ui::console
