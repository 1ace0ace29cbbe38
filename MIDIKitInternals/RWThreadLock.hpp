#pragma once

#include <pthread.h>

#include "MIDIKitInternals/ThreadLock.hpp"

namespace midikit::internals {

/// A lock of POSIX threads. A use that the system refuses, as a thread that waits for itself, stops the
/// program: going on without the lock would be worse.
class RWThreadLock final : public ThreadLock {
 public:
  RWThreadLock();
  ~RWThreadLock() override;
  RWThreadLock(const RWThreadLock&) = delete;
  RWThreadLock& operator=(const RWThreadLock&) = delete;

  void readLock() override;
  void writeLock() override;
  void unlock() override;

 private:
  pthread_rwlock_t lock_;
};

}  // namespace midikit::internals
