#pragma once

#include <memory>
#include <utility>

#include "MIDIKitIO/receive/EventsBase.hpp"
#include "MIDIKitIO/receive/ReceivesMIDIEvents.hpp"
#include "MIDIKitIO/receive/UserCall.hpp"

namespace midikit::io::receive {

/// Hands events to an object for as long as somebody else keeps that alive. Without it, the parsers go on.
class WeakEventsReceiver final : public EventsBase {
 public:
  WeakEventsReceiver(MIDIReceiverOptions options, std::weak_ptr<ReceivesMIDIEvents> receiver)
      : EventsBase(options), receiver_(std::move(receiver)) {}

 private:
  void handle(std::span<const core::MIDIEvent> events, std::uint64_t timeStamp,
              const MIDIPacketSource& source) override {
    if (const auto receiver = receiver_.lock()) {
      callUser([&] { receiver->eventsReceived(events, timeStamp, source); });
    }
  }

  std::weak_ptr<ReceivesMIDIEvents> receiver_;
};

}  // namespace midikit::io::receive
