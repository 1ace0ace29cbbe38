#include "MIDIKitIO/manager/OwnershipGate.hpp"

namespace midikit::io {

void OwnershipGate::begin() {
  const std::lock_guard lock(mutex_);
  ++begun_;
  ++underWay_;
}

void OwnershipGate::end() {
  const std::lock_guard lock(mutex_);
  if (--underWay_ > 0) {
    return;
  }
  for (const auto& latch : std::exchange(awaited_, {})) {
    latch->open();
  }
}

std::uint64_t OwnershipGate::awaitEnd() const {
  std::shared_ptr<karvex::foundation::Latch> latch;
  {
    const std::lock_guard lock(mutex_);
    if (underWay_ == 0) {
      return begun_;
    }
    latch = awaited_.emplace_back(runtime_.makeLatch());
  }
  latch->wait();
  return count();
}

std::uint64_t OwnershipGate::count() const {
  const std::lock_guard lock(mutex_);
  return begun_;
}

}  // namespace midikit::io
