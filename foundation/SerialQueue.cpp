#include "foundation/SerialQueue.hpp"

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <utility>

#include "foundation/WaitingLine.hpp"

namespace karvex::foundation {
namespace {

thread_local const detail::InsideQueue* inside = nullptr;  ///< the innermost
thread_local RunAfterwards* afterwards = nullptr;          ///< the same

}  // namespace

namespace {

/// What waits: a job, or the gate of a thread that waits to run its work itself.
struct Waiting {
  Job job;
  std::shared_ptr<Gate> gate;
};

}  // namespace

struct SerialQueue::State : std::enable_shared_from_this<State> {
  State(Queue& queue, std::string name) : target(queue), label(std::move(name)) {}

  void add(Job job) {
    {
      const std::lock_guard lock(mutex);
      waiting.push({std::move(job), nullptr});
      if (std::exchange(isBusy, true)) {
        return;
      }
    }
    if (afterwards == nullptr || !afterwards->take(shared_from_this())) {
      target.post(NextTurn(shared_from_this()));
    }
  }

  void awaitTurn(Runtime& runtime) {
    std::shared_ptr<Gate> gate;
    {
      const std::lock_guard lock(mutex);
      if (!std::exchange(isBusy, true)) {
        return;
      }
      gate = runtime.makeGate();
      waiting.push({nullptr, gate});
    }
    gate->wait();
  }

  /// One job for each turn on the target, so that a busy queue leaves room for the others there.
  void runNext() {
    Waiting next;
    {
      const std::lock_guard lock(mutex);
      next = waiting.pop();
    }
    if (next.gate) {
      return next.gate->open();
    }
    const detail::InsideQueue frame{this, inside};
    inside = &frame;
    next.job();
    next.job = nullptr;
    inside = frame.outer;
    endTurn();
  }

  void endTurn() {
    {
      const std::lock_guard lock(mutex);
      isBusy = !waiting.empty();
      if (!isBusy) {
        return;
      }
    }
    target.post(NextTurn(shared_from_this()));
  }

  /// The target runs nothing any more. Jobs are dropped as it drops its own; a thread that waits gets its
  /// turn.
  void dropNext() {
    while (true) {
      Waiting next;
      {
        const std::lock_guard lock(mutex);
        isBusy = !waiting.empty();
        if (!isBusy) {
          return;
        }
        next = waiting.pop();
      }
      if (next.gate) {
        return next.gate->open();
      }
    }
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
  std::mutex mutex;
  WaitingLine<Waiting> waiting;
  bool isBusy = false;
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
  const std::lock_guard lock(state_->mutex);
  return !std::exchange(state_->isBusy, true);
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
