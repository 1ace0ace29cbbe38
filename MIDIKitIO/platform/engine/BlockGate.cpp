#include "MIDIKitIO/platform/engine/BlockGate.hpp"

#include <utility>

namespace midikit::io::engine {

// A call marks the gate before it looks whether that is closed, and close() closes it before it looks for
// the mark, all of it in one order for all threads. So one of them sees the other.

bool BlockGate::enter() {
  occupant_ = std::this_thread::get_id();
  if (isClosed_) {
    leave();
    return false;
  }
  return true;
}

void BlockGate::leave() {
  occupant_ = std::thread::id();
  if (!isClosed_) {
    return;
  }
  const std::lock_guard lock(mutex_);
  for (const auto& latch : std::exchange(awaited_, {})) {
    latch->open();
  }
}

void BlockGate::close() {
  isClosed_ = true;
  std::shared_ptr<karvex::foundation::Latch> latch;
  {
    const std::lock_guard lock(mutex_);
    const std::thread::id occupant = occupant_;
    if (occupant == std::thread::id() || occupant == std::this_thread::get_id()) {
      return;
    }
    latch = awaited_.emplace_back(runtime_.makeLatch());
    // The call may have left since, and have found nobody to open a latch for.
    if (occupant_ == std::thread::id()) {
      awaited_.pop_back();
      return;
    }
  }
  latch->wait();
}

}  // namespace midikit::io::engine
