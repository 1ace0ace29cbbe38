#pragma once

#include <utility>

#include "MIDIKitIO/receive/EventsBase.hpp"
#include "MIDIKitIO/receive/MIDIReceiver.hpp"
#include "MIDIKitIO/receive/UserCall.hpp"

namespace midikit::io::receive {

/// Hands events to a callable.
class Events final : public EventsBase {
 public:
  Events(MIDIReceiverOptions options, MIDIReceiver::EventsHandler handler)
      : EventsBase(options), handler_(std::move(handler)) {}

 private:
  void handle(std::span<const core::MIDIEvent> events, std::uint64_t timeStamp,
              const MIDIPacketSource& source) override {
    if (handler_) {
      callUser([&] { handler_(events, timeStamp, source); });
    }
  }

  MIDIReceiver::EventsHandler handler_;
};

}  // namespace midikit::io::receive
