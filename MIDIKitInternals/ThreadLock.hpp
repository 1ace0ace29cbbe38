#pragma once

namespace midikit::internals {

/// A lock that many readers or one writer hold. Any thread; whoever locks it unlocks it, on the same thread,
/// before asking for it again.
class ThreadLock {
 public:
  virtual ~ThreadLock() = default;

  /// Waits for a writer to leave.
  virtual void readLock() = 0;

  /// Waits for everybody to leave.
  virtual void writeLock() = 0;

  /// Ends either.
  virtual void unlock() = 0;
};

}  // namespace midikit::internals
