#include "MIDIKitIO/platform/engine/BlockGate.hpp"

#include <utility>

namespace midikit::io::engine {

bool BlockGate::enter() {
  const std::lock_guard lock(mutex_);
  if (isClosed_) {
    return false;
  }
  occupant_ = std::this_thread::get_id();
  return true;
}

void BlockGate::leave() {
  const std::lock_guard lock(mutex_);
  occupant_ = {};
  for (const auto& gate : std::exchange(awaited_, {})) {
    gate->open();
  }
}

void BlockGate::close() {
  std::shared_ptr<karvex::foundation::Gate> gate;
  {
    const std::lock_guard lock(mutex_);
    isClosed_ = true;
    if (occupant_ == std::thread::id() || occupant_ == std::this_thread::get_id()) {
      return;
    }
    gate = awaited_.emplace_back(runtime_.makeGate());
  }
  gate->wait();
}

}  // namespace midikit::io::engine
