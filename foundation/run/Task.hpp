#pragma once

#include <coroutine>
#include <exception>
#include <memory>
#include <optional>
#include <utility>

#include "foundation/run/Clock.hpp"
#include "foundation/run/Queue.hpp"

namespace karvex::foundation {

template <typename T>
class Task;

namespace detail {

/// What every coroutine of this file has: the coroutine that waits for it.
struct PromiseBase {
  PromiseBase* awaiter = nullptr;
  std::coroutine_handle<> self;

  /// The outermost coroutine: it owns all the others, so whoever drops the work destroys this one.
  std::coroutine_handle<> root() {
    PromiseBase* promise = this;
    while (promise->awaiter != nullptr) {
      promise = promise->awaiter;
    }
    return promise->self;
  }
};

/// A suspended coroutine on its way through a queue. If the queue drops it, the whole chain of coroutines is
/// destroyed instead of leaking.
class Resumption {
 public:
  explicit Resumption(PromiseBase& promise) : promise_(&promise) {}
  Resumption(const Resumption&) = delete;
  Resumption& operator=(const Resumption&) = delete;
  ~Resumption() {
    if (promise_ != nullptr) {
      promise_->root().destroy();
    }
  }
  void resume() { std::exchange(promise_, nullptr)->self.resume(); }

 private:
  PromiseBase* promise_;
};

/// The job that goes on with a suspended coroutine.
inline Job resumeJob(PromiseBase& promise) {
  return [resumption = std::make_shared<Resumption>(promise)] { resumption->resume(); };
}

struct QueueAwaiter {
  Queue& queue;
  std::optional<TimePoint> due;

  bool await_ready() const noexcept { return false; }
  template <typename Promise>
  void await_suspend(std::coroutine_handle<Promise> handle) const {
    auto& target = queue;  // The awaiter dies with the coroutine, which may go on before this call returns.
    auto job = resumeJob(handle.promise());
    if (due) {
      target.postAt(*due, std::move(job));
    } else {
      target.post(std::move(job));
    }
  }
  void await_resume() const noexcept {}
};

template <typename T>
struct TaskPromise : PromiseBase {
  std::optional<T> value;
  std::exception_ptr error;

  void return_value(T result) { value.emplace(std::move(result)); }
  T take() {
    if (error) {
      std::rethrow_exception(error);
    }
    return std::move(*value);
  }
};

template <>
struct TaskPromise<void> : PromiseBase {
  std::exception_ptr error;

  void return_void() {}
  void take() const {
    if (error) {
      std::rethrow_exception(error);
    }
  }
};

}  // namespace detail

/// Asynchronous work that gives a T. It starts when it is awaited, runs on the awaiter's thread until it
/// moves itself to another queue, and is destroyed with the Task object. An exception comes out of the
/// co_await.
template <typename T = void>
class [[nodiscard]] Task {
 public:
  struct promise_type : detail::TaskPromise<T> {
    Task get_return_object() {
      auto handle = std::coroutine_handle<promise_type>::from_promise(*this);
      this->self = handle;
      return Task(handle);
    }
    std::suspend_always initial_suspend() noexcept { return {}; }
    auto final_suspend() noexcept {
      struct GoOnWithAwaiter {
        bool await_ready() noexcept { return false; }
        std::coroutine_handle<> await_suspend(std::coroutine_handle<promise_type> done) noexcept {
          auto* awaiter = done.promise().awaiter;
          return awaiter != nullptr ? awaiter->self : std::noop_coroutine();
        }
        void await_resume() noexcept {}
      };
      return GoOnWithAwaiter{};
    }
    void unhandled_exception() { this->error = std::current_exception(); }
  };

  Task(Task&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Task(const Task&) = delete;
  Task& operator=(const Task&) = delete;
  Task& operator=(Task&&) = delete;
  ~Task() {
    if (handle_) {
      handle_.destroy();
    }
  }

  auto operator co_await() && { return Awaiter{handle_}; }

 private:
  struct Awaiter {
    std::coroutine_handle<promise_type> task;
    bool await_ready() const noexcept { return false; }
    template <typename Promise>
    std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> awaiting) const {
      task.promise().awaiter = &awaiting.promise();
      return task;
    }
    T await_resume() const { return task.promise().take(); }
  };

  explicit Task(std::coroutine_handle<promise_type> handle) : handle_(handle) {}

  std::coroutine_handle<promise_type> handle_;
};

namespace detail {

/// The outermost coroutine: it belongs to nobody and destroys itself at its end.
struct Detached {
  struct promise_type : PromiseBase {
    Detached get_return_object() {
      self = std::coroutine_handle<promise_type>::from_promise(*this);
      return {};
    }
    std::suspend_never initial_suspend() noexcept { return {}; }
    std::suspend_never final_suspend() noexcept { return {}; }
    void return_void() {}
    void unhandled_exception() { std::terminate(); }
  };
};

inline Detached runDetached(Queue& queue, Task<void> task) {
  co_await QueueAwaiter{queue, std::nullopt};
  co_await std::move(task);
}

}  // namespace detail

/// `co_await resumeOn(queue)`: the coroutine goes on there, behind the jobs that the queue holds already.
inline detail::QueueAwaiter resumeOn(Queue& queue) {
  return {queue, std::nullopt};
}

/// `co_await resumeAt(queue, due)`: the coroutine goes on there at `due`; no thread is blocked meanwhile.
inline detail::QueueAwaiter resumeAt(Queue& queue, TimePoint due) {
  return {queue, due};
}

/// Starts `task` on `queue` and forgets it. An exception that leaves it ends the program.
inline void spawn(Queue& queue, Task<void> task) {
  detail::runDetached(queue, std::move(task));
}

}  // namespace karvex::foundation
