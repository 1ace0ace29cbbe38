#include "MIDIKitInternals/RWThreadLock.hpp"

#include <cstdio>
#include <cstdlib>

namespace midikit::internals {
namespace {

void require(int error, const char* operation) {
  if (error != 0) {
    std::fprintf(stderr, "Could not execute %s, errno: %d\n", operation, error);
    std::abort();
  }
}

}  // namespace

RWThreadLock::RWThreadLock() {
  require(pthread_rwlock_init(&lock_, nullptr), "pthread_rwlock_init");
}

RWThreadLock::~RWThreadLock() {
  pthread_rwlock_destroy(&lock_);
}

void RWThreadLock::readLock() {
  require(pthread_rwlock_rdlock(&lock_), "pthread_rwlock_rdlock");
}

void RWThreadLock::writeLock() {
  require(pthread_rwlock_wrlock(&lock_), "pthread_rwlock_wrlock");
}

void RWThreadLock::unlock() {
  require(pthread_rwlock_unlock(&lock_), "pthread_rwlock_unlock");
}

}  // namespace midikit::internals
