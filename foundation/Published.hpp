#pragma once

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
  explicit Published(T initial = T()) : value_(std::move(initial)) {}
  Published(const Published&) = delete;
  Published& operator=(const Published&) = delete;

  T get() const {
    const std::lock_guard lock(mutex_);
    return value_;
  }

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

  [[nodiscard]] Subscription observe(std::function<void(const T&)> observer) {
    return observers_.add(std::move(observer));
  }

 private:
  mutable std::mutex mutex_;
  T value_;
  Observers<T> observers_;
};

}  // namespace karvex::foundation
