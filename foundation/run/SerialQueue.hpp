#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "foundation/run/Queue.hpp"
#include "foundation/run/Runtime.hpp"

namespace karvex::foundation {

namespace detail {

/// A queue that a thread is inside a job of, and the one around that.
struct InsideQueue {
  const void* queue = nullptr;
  const InsideQueue* outer = nullptr;
};

}  // namespace detail

/// Jobs in the order in which they were posted, never two at a time, on the threads of a target queue. The
/// target must outlive it. Jobs that are still waiting when the SerialQueue goes are run all the same.
class SerialQueue final : public Queue {
 public:
  /// The label tells queues apart for people.
  explicit SerialQueue(Queue& target, std::string label = {});

  void post(Job job) override;
  void postAt(TimePoint due, Job job) override;

  /// Runs `work` as a job of this queue, behind those that wait already, and returns what it returns or
  /// throws what it throws. It runs on the calling thread, which waits for its turn at a latch of the
  /// runtime; on an idle queue that is at once. Not to be called inside a job of this queue, which would wait
  /// for itself: that ends the program.
  template <typename Work>
  std::invoke_result_t<Work> runSynchronously(Runtime& runtime, Work&& work) {
    const Turn turn(*this, runtime);
    return std::invoke(std::forward<Work>(work));
  }

  /// Runs `work` as a job of this queue on the calling thread if the queue is idle. Returns false if it
  /// isn't, without having run anything.
  template <typename Work>
  bool runIfIdle(const Work& work) {
    if (!takeIdleTurn()) {
      return false;
    }
    const Turn turn(*this);
    work();
    return true;
  }

  /// True while the calling thread is inside a job of this queue.
  bool isCurrent() const;

  const std::string& label() const;

 private:
  friend class RunAfterwards;
  struct State;

  /// The calling thread's turn on the queue.
  class Turn {
   public:
    /// Waits for it.
    Turn(const SerialQueue& queue, Runtime& runtime);
    /// Has taken it.
    explicit Turn(const SerialQueue& queue);
    ~Turn();
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

   private:
    std::shared_ptr<State> state_;
    detail::InsideQueue frame_;
  };

  bool takeIdleTurn();

  std::shared_ptr<State> state_;
};

/// While it exists, jobs that this thread posts to idle SerialQueues don't go to the queues' targets: the
/// thread runs them itself when the object goes, one of each queue and of up to four queues. That saves a
/// change of threads where the thread has nothing else to do, and the poster still never waits for a job.
class RunAfterwards {
 public:
  RunAfterwards();
  ~RunAfterwards();
  RunAfterwards(const RunAfterwards&) = delete;
  RunAfterwards& operator=(const RunAfterwards&) = delete;

 private:
  friend struct SerialQueue::State;
  bool take(const std::shared_ptr<SerialQueue::State>& queue);

  std::array<std::shared_ptr<SerialQueue::State>, 4> queues_;  ///< whose turn this thread has
  std::size_t count_ = 0;
  RunAfterwards* outer_;
};

}  // namespace karvex::foundation
