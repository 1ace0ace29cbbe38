#include "MIDIKitIO/platform/linux/Emitter.hpp"

#include <algorithm>
#include <vector>

namespace midikit::io::alsa {

void Emitter::send(const MIDIPacketList& list) {
  const auto port = source_.port();
  const auto listeners = port ? sequencer_->listeners(*port) : std::vector<PortAddress>();
  std::erase_if(outlets_, [&](const auto& entry) {
    return port != port_ || std::ranges::find(listeners, entry.first) == listeners.end();
  });
  port_ = port;
  for (const auto listener : listeners) {
    auto& outlet = outlets_[listener];
    if (outlet == nullptr) {
      outlet = outletTo(listener, *port);
    }
    outlet->send(list);
  }
}

std::shared_ptr<Outlet> Emitter::outletTo(PortAddress listener, int port) const {
  return std::make_shared<Outlet>(
      context_, queue_,
      Outlet::Route{.from = port,
                    .place = [listener] { return listener; },
                    .sysExRate = [rate = source_.sysExRate, listener] { return rate(listener); }});
}

}  // namespace midikit::io::alsa
