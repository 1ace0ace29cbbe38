#include "foundation/run/SystemRuntime.hpp"

#include <asio.hpp>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <shared_mutex>
#include <thread>
#include <utility>
#include <vector>

#include "foundation/run/BlockStore.hpp"

namespace karvex::foundation {
namespace {

class SystemClock final : public Clock {
 public:
  TimePoint now() const override { return std::chrono::steady_clock::now(); }
  void sleepUntil(TimePoint deadline) override { std::this_thread::sleep_until(deadline); }
};

/// Real time goes on whatever others do.
class NoOutsideWork final : public OutsideWork {
 public:
  Ticket begin() override { return 0; }
  void setName(Ticket, std::uint64_t) override {}
  void end(Ticket) override {}
  void pause(std::uint64_t) override {}
  void resume(std::uint64_t) override {}
  void resumeTicket(Ticket) override {}
};

class SystemLatch final : public Latch {
 public:
  void wait() override {
    std::unique_lock lock(mutex_);
    opened_.wait(lock, [this] { return isOpen_; });
  }
  void open() override {
    const std::lock_guard lock(mutex_);
    isOpen_ = true;
    opened_.notify_all();
  }

 private:
  std::mutex mutex_;
  std::condition_variable opened_;
  bool isOpen_ = false;
};

/// A job that has Asio take its memory from a store.
struct StoredJob {
  using allocator_type = BlockAllocator<std::byte>;
  const allocator_type& get_allocator() const { return allocator; }
  void operator()() {
    if (!isFinished) {
      job();
    }
  }

  Job job;
  allocator_type allocator;
  const std::atomic<bool>& isFinished;
};

/// A queue that runs its jobs on the threads of a context, until it is finished.
class AsioQueue final : public Queue {
 public:
  explicit AsioQueue(asio::io_context& context) : context_(context) {}

  void post(Job job) override {
    const std::shared_lock lock(mutex_);
    if (!isFinished_) {
      asio::post(context_, StoredJob{std::move(job), memory_, isFinished_});
    }
  }

  void postAt(TimePoint due, Job job) override {
    auto timer = std::make_unique<asio::steady_timer>(context_, due);
    auto& waiting = *timer;
    waiting.async_wait(
        [this, timer = std::move(timer), job = std::move(job)](const asio::error_code& error) mutable {
          if (!error && !isFinished_) {
            job();
          }
        });
  }

  /// Drops what waits, on the calling thread, and what comes. Jobs that have begun run on. False if it was
  /// finished already.
  bool finish() {
    {
      const std::unique_lock lock(mutex_);
      if (isFinished_.exchange(true)) {
        return false;
      }
    }
    context_.poll();
    context_.stop();
    return true;
  }

 private:
  asio::io_context& context_;
  std::shared_mutex mutex_;  ///< nothing is posted while isFinished_ changes
  std::atomic<bool> isFinished_ = false;
  /// For jobs that wait, with what Asio adds to each. Asio itself keeps memory only for threads of its own.
  const StoredJob::allocator_type memory_{std::make_shared<BlockStore>(256, 64)};
};

/// Global jobs sleep and wait for devices, so there are more threads than processors. A job waits for a
/// thread only when as many as this are blocked at once.
std::size_t globalThreads() {
  constexpr std::size_t blocked = 8;
  return std::thread::hardware_concurrency() + blocked;
}

}  // namespace

struct SystemRuntime::State {
  SystemClock clock;
  NoOutsideWork outsideWork;
  asio::io_context mainContext{1};
  asio::io_context globalContext;
  AsioQueue mainQueue{mainContext};
  AsioQueue globalQueue{globalContext};
  asio::executor_work_guard<asio::io_context::executor_type> keepRunning =
      asio::make_work_guard(globalContext);
  std::vector<std::thread> threads;
};

SystemRuntime::SystemRuntime() : state_(std::make_unique<State>()) {
  state_->threads.resize(globalThreads());
  for (auto& thread : state_->threads) {
    thread = std::thread([this] { state_->globalContext.run(); });
  }
}

SystemRuntime::~SystemRuntime() {
  SystemRuntime::finish();
}

void SystemRuntime::finish() {
  if (state_->globalQueue.finish()) {
    for (auto& thread : state_->threads) {
      thread.join();
    }
  }
}

Clock& SystemRuntime::clock() {
  return state_->clock;
}
Queue& SystemRuntime::mainQueue() {
  return state_->mainQueue;
}
OutsideWork& SystemRuntime::outsideWork() {
  return state_->outsideWork;
}
Queue& SystemRuntime::globalQueue() {
  return state_->globalQueue;
}
std::shared_ptr<Latch> SystemRuntime::makeLatch() {
  return std::make_shared<SystemLatch>();
}

void SystemRuntime::runMain() {
  auto keepRunning = asio::make_work_guard(state_->mainContext);
  state_->mainContext.restart();
  state_->mainContext.run();
}

void SystemRuntime::stopMain() {
  asio::post(state_->mainContext, [this] { state_->mainContext.stop(); });
}

}  // namespace karvex::foundation
