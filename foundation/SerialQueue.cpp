#include "foundation/SerialQueue.hpp"

#include <deque>
#include <mutex>
#include <utility>

namespace karvex::foundation {
namespace {

thread_local const void* runningQueue = nullptr;

}  // namespace

struct SerialQueue::State : std::enable_shared_from_this<State> {
  explicit State(Queue& queue) : target(queue) {}

  void add(Job job) {
    const std::lock_guard lock(mutex);
    waiting.push_back(std::move(job));
    if (!std::exchange(isDraining, true)) {
      target.post([self = shared_from_this()] { self->runNext(); });
    }
  }

  /// One job for each turn on the target, so that a busy queue leaves room for the others there.
  void runNext() {
    Job job;
    {
      const std::lock_guard lock(mutex);
      job = std::move(waiting.front());
      waiting.pop_front();
    }
    const void* outer = std::exchange(runningQueue, this);
    job();
    job = nullptr;
    runningQueue = outer;
    const std::lock_guard lock(mutex);
    isDraining = !waiting.empty();
    if (isDraining) {
      target.post([self = shared_from_this()] { self->runNext(); });
    }
  }

  Queue& target;
  std::mutex mutex;
  std::deque<Job> waiting;
  bool isDraining = false;
};

SerialQueue::SerialQueue(Queue& target) : state_(std::make_shared<State>(target)) {}

void SerialQueue::post(Job job) {
  state_->add(std::move(job));
}

void SerialQueue::postAt(TimePoint due, Job job) {
  state_->target.postAt(due,
                        [state = state_, job = std::move(job)]() mutable { state->add(std::move(job)); });
}

bool SerialQueue::isCurrent() const {
  return runningQueue == state_.get();
}

}  // namespace karvex::foundation
