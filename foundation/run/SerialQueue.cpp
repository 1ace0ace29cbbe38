#include "foundation/run/SerialQueue.hpp"

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <utility>

#include "foundation/run/WaitingLine.hpp"

namespace karvex::foundation {
namespace {

thread_local const detail::InsideQueue* inside = nullptr;  ///< the innermost
thread_local RunAfterwards* afterwards = nullptr;          ///< the same

}  // namespace

namespace {

/// What waits: a job, or the latch of a thread that waits to run its work itself.
struct Waiting {
  Job job;
  std::shared_ptr<Latch> latch;
};

}  // namespace

struct SerialQueue::State : std::enable_shared_from_this<State> {
  State(Queue& queue, std::string name) : target(queue), label(std::move(name)) {}

  void add(Job job) {
    if (!enlist({std::move(job), nullptr})) {
      return;
    }
    if (afterwards == nullptr || !afterwards->take(shared_from_this())) {
      target.post(NextTurn(shared_from_this()));
    }
  }

  void awaitTurn(Runtime& runtime) {
    if (takeIdleTurn()) {
      return;
    }
    const auto latch = runtime.makeLatch();
    if (enlist({nullptr, latch})) {
      runNext();  // The queue has become idle meanwhile, so it is this latch that opens.
    }
    latch->wait();
  }

  /// True if the queue was idle: then the caller has the turn.
  bool takeIdleTurn() {
    std::size_t none = 0;
    return pending.compare_exchange_strong(none, 1);
  }

  /// True if the queue was idle: then the caller has the turn, which is for what it has put there.
  bool enlist(Waiting one) {
    const std::lock_guard lock(mutex);
    waiting.push(std::move(one));
    return pending++ == 0;
  }

  Waiting next() {
    const std::lock_guard lock(mutex);
    return waiting.pop();
  }

  /// One job for each turn on the target, so that a busy queue leaves room for the others there.
  void runNext() {
    Waiting first = next();
    if (first.latch) {
      return first.latch->open();
    }
    const detail::InsideQueue frame{this, inside};
    inside = &frame;
    first.job();
    first.job = nullptr;
    inside = frame.outer;
    endTurn();
  }

  void endTurn() {
    if (--pending != 0) {
      target.post(NextTurn(shared_from_this()));
    }
  }

  /// The target runs nothing any more. Jobs are dropped as it drops its own; a thread that waits gets its
  /// turn.
  void dropNext() {
    do {
      if (const Waiting first = next(); first.latch) {
        return first.latch->open();
      }
    } while (--pending != 0);
  }

  /// The job that a queue has on its target.
  class NextTurn {
   public:
    explicit NextTurn(std::shared_ptr<State> state) : state_(std::move(state)) {}
    NextTurn(NextTurn&&) noexcept = default;
    NextTurn& operator=(NextTurn&&) = delete;
    ~NextTurn() {
      if (state_ != nullptr) {
        state_->dropNext();
      }
    }
    void operator()() { std::exchange(state_, nullptr)->runNext(); }

   private:
    std::shared_ptr<State> state_;
  };

  Queue& target;
  const std::string label;
  /// How many wait, and one more while somebody has the turn. It grows from 0 without the lock, for a turn
  /// that nobody waited for, and falls without it.
  std::atomic<std::size_t> pending = 0;
  std::mutex mutex;  ///< of what follows
  WaitingLine<Waiting> waiting;
};

SerialQueue::SerialQueue(Queue& target, std::string label)
    : state_(std::make_shared<State>(target, std::move(label))) {}

void SerialQueue::post(Job job) {
  state_->add(std::move(job));
}

void SerialQueue::postAt(TimePoint due, Job job) {
  state_->target.postAt(due,
                        [state = state_, job = std::move(job)]() mutable { state->add(std::move(job)); });
}

bool SerialQueue::takeIdleTurn() {
  return state_->takeIdleTurn();
}

bool SerialQueue::isCurrent() const {
  const auto* frame = inside;
  while (frame != nullptr && frame->queue != state_.get()) {
    frame = frame->outer;
  }
  return frame != nullptr;
}

const std::string& SerialQueue::label() const {
  return state_->label;
}

SerialQueue::Turn::Turn(const SerialQueue& queue, Runtime& runtime) : state_(queue.state_) {
  if (queue.isCurrent()) {
    std::fprintf(stderr, "SerialQueue %s: a job of the queue waits for itself\n", state_->label.c_str());
    std::abort();
  }
  state_->awaitTurn(runtime);
  frame_ = {state_.get(), inside};
  inside = &frame_;
}

SerialQueue::Turn::Turn(const SerialQueue& queue)
    : state_(queue.state_), frame_{.queue = state_.get(), .outer = inside} {
  inside = &frame_;
}

RunAfterwards::RunAfterwards() : outer_(std::exchange(afterwards, this)) {}

RunAfterwards::~RunAfterwards() {
  afterwards = outer_;
  for (std::size_t i = 0; i < count_; ++i) {
    queues_.at(i)->runNext();
  }
}

bool RunAfterwards::take(const std::shared_ptr<SerialQueue::State>& queue) {
  if (count_ == queues_.size()) {
    return false;
  }
  queues_.at(count_++) = queue;
  return true;
}

SerialQueue::Turn::~Turn() {
  inside = frame_.outer;
  state_->endTurn();
}

}  // namespace karvex::foundation
