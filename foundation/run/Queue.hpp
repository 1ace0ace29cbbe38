#pragma once

#include "foundation/run/Clock.hpp"
#include "foundation/run/Job.hpp"

namespace karvex::foundation {

/// Where work runs. Jobs that are ready start in the order in which they became so; whether they can overlap
/// is the queue's own property (the main queue and a SerialQueue never, the global queue always). Posting is
/// allowed from any thread and never waits for the job.
class Queue {
 public:
  virtual ~Queue() = default;

  /// Runs `job` as soon as the queue gets to it.
  virtual void post(Job job) = 0;

  /// Makes `job` ready at `due`; a moment that has passed means at once.
  virtual void postAt(TimePoint due, Job job) = 0;
};

}  // namespace karvex::foundation
