#include "MIDIKitIO/platform/linux/InputThreads.hpp"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <system_error>
#include <utility>

#include "foundation/run/SerialQueue.hpp"

namespace midikit::io::alsa {

namespace {

using Thread = engine::ListReceiver::Thread;

/// What takes longer than this is relieved of the reading. Most takes some microseconds.
constexpr std::chrono::milliseconds patience{1};

int checked(int descriptor) {
  if (descriptor < 0) {
    throw std::system_error(errno, std::generic_category());
  }
  return descriptor;
}

class Descriptor {
 public:
  explicit Descriptor(int made) : number(checked(made)) {}
  ~Descriptor() { ::close(number); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  const int number;
};

}  // namespace

struct InputThreads::State {
  State(int descriptor, Read itsRead) : read(std::move(itsRead)) {
    watch(descriptor, EPOLLIN | EPOLLET);  // Each arrival wakes one thread, the one that went to sleep last.
    watch(cancelEvent.number, EPOLLIN);
  }

  void watch(int descriptor, std::uint32_t events) const {
    epoll_event wanted{.events = events, .data = {}};
    checked(::epoll_ctl(epoll.number, EPOLL_CTL_ADD, descriptor, &wanted));
  }

  void run() {
    do {
      epoll_event event{};
      while (::epoll_wait(epoll.number, &event, 1, -1) < 0 && errno == EINTR) {
      }
      if (isActing) {
        awaitEndOfAct();
      }
    } while (takeAll());
  }

  /// All that has come, since the descriptor tells of each arrival once. False when there is no more to do.
  bool takeAll() {
    while (true) {
      const auto intake = [this] {
        const std::lock_guard lock(reading);
        return isCancelled ? std::nullopt : std::optional(read());
      }();
      if (!intake || intake->hasGone) {
        return false;
      }
      if (!intake->hasAny) {
        return true;
      }
      if (!intake->handovers.empty()) {
        act(intake->handovers);
      }
    }
  }

  void act(const engine::Handovers& handovers) {
    if (isActing.exchange(true)) {
      handovers.make(Thread::queues);
      return;
    }
    {
      const karvex::foundation::RunAfterwards afterwards;
      handovers.make(Thread::callers);
    }
    isActing = false;
  }

  /// If the other thread is done soon, it reads what has come.
  void awaitEndOfAct() {
    std::unique_lock lock(reading);
    cancelled.wait_for(lock, patience, [this] { return isCancelled; });
  }

  void cancel() {
    {
      const std::lock_guard lock(reading);
      isCancelled = true;
    }
    cancelled.notify_all();
    const std::uint64_t once = 1;
    // An event counter that was never written to takes a 1: there is no failure to look at.
    [[maybe_unused]] const auto written = ::write(cancelEvent.number, &once, sizeof once);
  }

  const Read read;
  const Descriptor epoll{::epoll_create1(EPOLL_CLOEXEC)};
  const Descriptor cancelEvent{::eventfd(0, EFD_CLOEXEC)};
  std::atomic<bool> isActing = false;  ///< one of the threads makes handovers
  std::mutex reading;                  ///< of calls of read, and of what follows
  std::condition_variable cancelled;
  bool isCancelled = false;
};

InputThreads::InputThreads(int descriptor, Read read)
    : state_(std::make_shared<State>(descriptor, std::move(read))) {
  for (auto& thread : threads_) {
    thread = std::thread([state = state_] { state->run(); });
  }
}

InputThreads::~InputThreads() {
  state_->cancel();
  for (auto& thread : threads_) {
    if (thread.get_id() == std::this_thread::get_id()) {
      thread.detach();
    } else if (thread.joinable()) {
      thread.join();
    }
  }
}

}  // namespace midikit::io::alsa
