#pragma once

#include <concepts>
#include <functional>
#include <memory>
#include <utility>

#include "MIDIKitInternals/RWThreadLock.hpp"
#include "MIDIKitInternals/ThreadLock.hpp"

namespace midikit::internals {

/// A value that any thread may read and write: many readers or one writer at a time. Nothing of it may be
/// used from inside modify() or from the value's own copying, which would wait for itself.
template <std::copyable Value>
class ThreadSafeAccess {
 public:
  explicit ThreadSafeAccess(Value value = {},
                            std::unique_ptr<ThreadLock> lock = std::make_unique<RWThreadLock>())
      : value_(std::move(value)), lock_(std::move(lock)) {}

  /// A copy of the value.
  Value value() const {
    lock_->readLock();
    const Unlocking unlocking(*lock_);
    return value_;
  }

  /// Puts `value` in the place of the old one, which ends after the lock has been given back.
  void setValue(Value value) {
    lock_->writeLock();
    const Unlocking unlocking(*lock_);
    std::swap(value_, value);
  }

  /// Lets `change` work on the value itself and returns a copy of what it returns. The lock is held for the
  /// whole call, also if it throws.
  template <std::invocable<Value&> Change>
  auto modify(Change&& change) {
    lock_->writeLock();
    const Unlocking unlocking(*lock_);
    return std::invoke(std::forward<Change>(change), value_);
  }

 private:
  class Unlocking {
   public:
    explicit Unlocking(ThreadLock& lock) : lock_(lock) {}
    ~Unlocking() { lock_.unlock(); }
    Unlocking(const Unlocking&) = delete;
    Unlocking& operator=(const Unlocking&) = delete;

   private:
    ThreadLock& lock_;
  };

  Value value_;
  std::unique_ptr<ThreadLock> lock_;
};

}  // namespace midikit::internals
