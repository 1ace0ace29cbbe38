#include "MIDIKitIO/platform/linux/OwnPorts.hpp"

#include "foundation/Log.hpp"

namespace midikit::io::alsa {

void OwnPorts::show(Ref endpoint, const Appearance& appearance) {
  if (appearance.isPrivate) {
    remove(endpoint);
    return;
  }
  if (const auto port = portOf(endpoint)) {
    sequencer_.renamePort(*port, appearance.name);
    return;
  }
  const auto port = sequencer_.addPort(appearance.name, appearance.direction);
  if (!port) {
    karvex::foundation::log::debug(
        "Other programs don't see the MIDI endpoint: the sequencer has no port left.");
    return;
  }
  const std::lock_guard lock(mutex_);
  ports_.emplace(endpoint, *port);
  endpoints_.emplace(*port, endpoint);
}

void OwnPorts::remove(Ref endpoint) {
  std::optional<int> port;
  {
    const std::lock_guard lock(mutex_);
    if (const auto node = ports_.extract(endpoint); !node.empty()) {
      port = node.mapped();
      endpoints_.erase(*port);
    }
  }
  if (port) {
    sequencer_.removePort(*port);
  }
}

std::optional<int> OwnPorts::portOf(Ref endpoint) const {
  const std::lock_guard lock(mutex_);
  const auto found = ports_.find(endpoint);
  return found != ports_.end() ? std::optional(found->second) : std::nullopt;
}

MIDIObjectRef OwnPorts::endpointAt(int port) const {
  const std::lock_guard lock(mutex_);
  const auto found = endpoints_.find(port);
  return found != endpoints_.end() ? found->second : 0;
}

}  // namespace midikit::io::alsa
