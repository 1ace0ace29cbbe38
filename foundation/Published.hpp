#pragma once

#include <concepts>
#include <functional>
#include <mutex>
#include <utility>

#include "foundation/Observers.hpp"

namespace karvex::foundation {

/// A value that tells its observers of every change, on the thread that makes it and before the change call
/// returns. Setting an equal value is a change like any other. All operations may be called on any thread.
template <typename T>
class Published {
 public:
  /// Nobody is told of the initial value.
  explicit Published(T initial = T()) : value_(std::move(initial)) {}
  Published(const Published&) = delete;
  Published& operator=(const Published&) = delete;

  /// A copy of the value as it is now.
  T get() const {
    const std::lock_guard lock(mutex_);
    return value_;
  }

  /// Puts another value in the place of the current one: one change.
  void set(T value) {
    update([&value](T& current) { current = std::move(value); });
  }

  /// Changes the value in place: one change, whatever `change` does. It must not touch this object otherwise.
  template <typename Change>
  void update(Change change) {
    T copy;
    {
      const std::lock_guard lock(mutex_);
      change(value_);
      copy = value_;
    }
    observers_.notify(copy);
  }

  /// Turns a flag over: one change.
  void toggle()
    requires std::same_as<T, bool>
  {
    update([](bool& value) { value = !value; });
  }

  /// Calls the observer with the new value of each change from now on, for as long as the subscription lives.
  [[nodiscard]] Subscription observe(std::function<void(const T&)> observer) {
    return observers_.add(std::move(observer));
  }

 private:
  mutable std::mutex mutex_;
  T value_;
  Observers<T> observers_;
};

}  // namespace karvex::foundation
