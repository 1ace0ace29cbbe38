#include "foundation/SystemRuntime.hpp"

#include <algorithm>
#include <asio.hpp>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

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

class SystemGate final : public Gate {
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

/// Blocks of memory that are handed out again and again. Asio needs one for each handler that waits, and
/// keeps such blocks only for threads that run handlers themselves.
class BlockStore {
 public:
  BlockStore() = default;
  BlockStore(const BlockStore&) = delete;
  BlockStore& operator=(const BlockStore&) = delete;
  ~BlockStore() {
    for (void* block : blocks_) {
      ::operator delete(block);
    }
  }

  void* take(std::size_t size) {
    if (size <= blockSize) {
      const std::lock_guard lock(mutex_);
      if (!blocks_.empty()) {
        void* block = blocks_.back();
        blocks_.pop_back();
        return block;
      }
    }
    return ::operator new(std::max(size, blockSize));
  }

  void giveBack(void* block, std::size_t size) noexcept {
    if (size <= blockSize) {
      const std::lock_guard lock(mutex_);
      if (blocks_.size() < blocks_.capacity()) {
        blocks_.push_back(block);
        return;
      }
    }
    ::operator delete(block);
  }

 private:
  static constexpr std::size_t blockSize = 256;  ///< a job with what Asio adds to it
  static constexpr std::size_t most = 64;

  std::mutex mutex_;
  std::vector<void*> blocks_ = [] {
    std::vector<void*> blocks;
    blocks.reserve(most);
    return blocks;
  }();
};

template <typename Value>
class BlockAllocator {
 public:
  using value_type = Value;

  explicit BlockAllocator(BlockStore& store) : store_(&store) {}
  template <typename Other>
  explicit(false) BlockAllocator(const BlockAllocator<Other>& other) : store_(other.store()) {}

  Value* allocate(std::size_t count) { return static_cast<Value*>(store_->take(count * sizeof(Value))); }
  void deallocate(Value* block, std::size_t count) noexcept {
    store_->giveBack(block, count * sizeof(Value));
  }
  BlockStore* store() const { return store_; }
  template <typename Other>
  bool operator==(const BlockAllocator<Other>& other) const {
    return store_ == other.store();
  }

 private:
  BlockStore* store_;
};

/// A job that has Asio take its memory from a store.
struct StoredJob {
  using allocator_type = BlockAllocator<std::byte>;
  allocator_type get_allocator() const { return allocator_type(*store); }
  void operator()() { job(); }

  Job job;
  BlockStore* store;
};

/// A queue over anything that Asio can run handlers on.
template <typename Context>
class AsioQueue final : public Queue {
 public:
  AsioQueue(Context& context, BlockStore& blocks) : context_(context), blocks_(blocks) {}

  void post(Job job) override { asio::post(context_, StoredJob{std::move(job), &blocks_}); }

  void postAt(TimePoint due, Job job) override {
    auto timer = std::make_unique<asio::steady_timer>(context_, due);
    auto& waiting = *timer;
    waiting.async_wait(
        [timer = std::move(timer), job = std::move(job)](const asio::error_code& error) mutable {
          if (!error) {
            job();
          }
        });
  }

 private:
  Context& context_;
  BlockStore& blocks_;
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
  BlockStore blocks;  ///< outlives the handlers that wait
  asio::io_context mainContext{1};
  asio::thread_pool pool{globalThreads()};
  AsioQueue<asio::io_context> mainQueue{mainContext, blocks};
  AsioQueue<asio::thread_pool> globalQueue{pool, blocks};
};

SystemRuntime::SystemRuntime() : state_(std::make_unique<State>()) {}

SystemRuntime::~SystemRuntime() {
  SystemRuntime::finish();
}

void SystemRuntime::finish() {
  state_->pool.stop();
  state_->pool.join();
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
std::shared_ptr<Gate> SystemRuntime::makeGate() {
  return std::make_shared<SystemGate>();
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
