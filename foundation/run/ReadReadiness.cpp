#include "foundation/run/ReadReadiness.hpp"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <system_error>
#include <utility>

namespace karvex::foundation {

/// What the watching thread, the handler's job and the owner share.
struct ReadReadiness::State {
  State(int itsDescriptor, Queue& itsQueue, Handler itsHandler)
      : descriptor(itsDescriptor), queue(itsQueue), handler(std::move(itsHandler)) {
    if (cancelEvent < 0) {
      throw std::system_error(errno, std::generic_category());
    }
  }
  ~State() { ::close(cancelEvent); }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  void cancel() {
    set(isCancelled);
    const std::uint64_t once = 1;
    // An event counter that was never written to takes a 1: there is no failure to look at.
    [[maybe_unused]] const auto written = ::write(cancelEvent, &once, sizeof once);
  }

  void resume() { set(isResumed); }

  void awaitResume() {
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return isCancelled || isResumed; });
  }

  bool wasCancelled() {
    const std::lock_guard lock(mutex);
    return isCancelled;
  }

  void answer(ReadOutcome what) {
    {
      const std::lock_guard lock(mutex);
      outcome = what;
    }
    changed.notify_all();
  }

  /// False once the watch was cancelled.
  bool awaitReadable() const {
    std::array<pollfd, 2> watched = {{
        {.fd = descriptor, .events = POLLIN, .revents = 0},
        {.fd = cancelEvent, .events = POLLIN, .revents = 0},
    }};
    while (::poll(watched.data(), watched.size(), -1) < 0 && errno == EINTR) {
    }
    return watched[1].revents == 0;
  }

  /// What the handler found; a cancelled watch counts as one whose source has gone. A job that the queue
  /// dropped never answers, so only that ends the wait for it.
  ReadOutcome awaitAnswer() {
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return isCancelled || outcome; });
    const auto found = std::exchange(outcome, std::nullopt);
    return isCancelled ? ReadOutcome::gone : found.value_or(ReadOutcome::gone);
  }

  void pause() {
    std::unique_lock lock(mutex);
    changed.wait_for(lock, pauseAfterNothing, [this] { return isCancelled; });
  }

  void set(bool& flag) {
    {
      const std::lock_guard lock(mutex);
      flag = true;
    }
    changed.notify_all();
  }

  const int descriptor;
  Queue& queue;
  const Handler handler;
  const int cancelEvent = ::eventfd(0, EFD_CLOEXEC);
  std::mutex mutex;
  std::condition_variable changed;
  bool isResumed = false;
  bool isCancelled = false;
  std::optional<ReadOutcome> outcome;
};

ReadReadiness::ReadReadiness(int descriptor, Queue& queue, Handler handler)
    : state_(std::make_shared<State>(descriptor, queue, std::move(handler))) {
  watcher_ = std::thread([state = state_] {
    state->awaitResume();
    while (state->awaitReadable()) {
      state->queue.post([state] {
        if (!state->wasCancelled()) {
          state->answer(state->handler());
        }
      });
      const auto outcome = state->awaitAnswer();
      if (outcome == ReadOutcome::gone) {
        return;
      }
      if (outcome == ReadOutcome::nothing) {
        state->pause();
      }
    }
  });
}

void ReadReadiness::resume() {
  state_->resume();
}

ReadReadiness::~ReadReadiness() {
  state_->cancel();
  watcher_.join();
}

}  // namespace karvex::foundation
