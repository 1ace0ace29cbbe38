#pragma once

#include <memory>

#include "foundation/Queue.hpp"

namespace karvex::foundation {

/// Jobs in the order in which they were posted, never two at a time, on the threads of a target queue. The
/// target must outlive it. Jobs that are still waiting when the SerialQueue goes are run all the same.
class SerialQueue final : public Queue {
 public:
  explicit SerialQueue(Queue& target);

  void post(Job job) override;
  void postAt(TimePoint due, Job job) override;

  /// True while the calling thread is inside a job of this queue.
  bool isCurrent() const;

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace karvex::foundation
