#pragma once

#include <coroutine>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "foundation/run/Queue.hpp"
#include "foundation/run/Task.hpp"

namespace karvex::foundation {

/// The consumer's side of a sequence of values that come in at their own pace, until it ends. What has come
/// in and was not taken yet is kept, without bound. An AsyncStream is a handle: copies of it are the same
/// stream, and when the last of them goes, values that still come in are dropped. There is one consumer at a
/// time; the producer may be on any thread.
template <typename T>
class AsyncStream {
  struct State;

 public:
  /// The other side. The stream ends with it at the latest. All operations may be called on any thread, but
  /// the order of values is that of the calls, so it is the callers' to keep.
  class Producer {
   public:
    Producer(Producer&&) noexcept = default;
    Producer(const Producer&) = delete;
    Producer& operator=(const Producer&) = delete;
    Producer& operator=(Producer&&) = delete;
    ~Producer() { finish(); }

    /// Appends a value. Without effect on a stream that has ended or that nobody holds any more.
    void yield(T value) {
      if (const auto state = state_.lock()) {
        state->add(std::move(value));
      }
    }

    /// Ends the stream: the consumer gets what is left, and then nothing. Harmless a second time.
    void finish() {
      if (const auto state = state_.lock()) {
        state->end();
      }
    }

   private:
    friend class AsyncStream;
    explicit Producer(const std::shared_ptr<State>& state) : state_(state) {}

    std::weak_ptr<State> state_;
  };

  /// The two sides of a new stream. A consumer that had to wait goes on on `queue`, which must outlive the
  /// stream.
  static std::pair<AsyncStream, Producer> make(Queue& queue) {
    auto state = std::make_shared<State>(queue);
    Producer producer(state);
    return {AsyncStream(std::move(state)), std::move(producer)};
  }

  /// `co_await stream.next()` gives the next value as soon as there is one, or nothing at the end.
  auto next() const { return Next{state_}; }

 private:
  struct State {
    explicit State(Queue& itsQueue) : queue(itsQueue) {}

    void add(T value) {
      std::unique_lock lock(mutex);
      if (!isFinished) {
        buffer.push_back(std::move(value));
        wake(std::move(lock));
      }
    }

    void end() {
      std::unique_lock lock(mutex);
      isFinished = true;
      wake(std::move(lock));
    }

    /// Behind the lock, because a queue that takes no more jobs destroys the consumer then and there.
    void wake(std::unique_lock<std::mutex> lock) {
      auto job = std::exchange(waiting, nullptr);
      lock.unlock();
      if (job) {
        queue.post(std::move(job));
      }
    }

    Queue& queue;
    std::mutex mutex;
    std::deque<T> buffer;
    bool isFinished = false;
    Job waiting;  ///< goes on with the consumer
  };

  struct Next {
    std::shared_ptr<State> state;

    bool await_ready() const noexcept { return false; }
    template <typename Promise>
    bool await_suspend(std::coroutine_handle<Promise> consumer) const {
      // The consumer may go on, and this awaiter be gone with it, before the lock is released.
      const auto held = state;
      const std::lock_guard lock(held->mutex);
      if (!held->buffer.empty() || held->isFinished) {
        return false;
      }
      held->waiting = detail::resumeJob(consumer.promise());
      return true;
    }
    std::optional<T> await_resume() const {
      const std::lock_guard lock(state->mutex);
      if (state->buffer.empty()) {
        return std::nullopt;
      }
      std::optional<T> value(std::move(state->buffer.front()));
      state->buffer.pop_front();
      return value;
    }
  };

  explicit AsyncStream(std::shared_ptr<State> state) : state_(std::move(state)) {}

  std::shared_ptr<State> state_;
};

}  // namespace karvex::foundation
