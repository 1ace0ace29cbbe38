#pragma once

#include <memory>
#include <utility>

#include "MIDIKitIO/receive/EventsBase.hpp"
#include "MIDIKitIO/receive/ReceivesMIDIEvents.hpp"
#include "MIDIKitIO/receive/UserCall.hpp"

namespace midikit::io::receive {

/// Hands events to an object that it keeps alive.
class StrongEventsReceiver final : public EventsBase {
 public:
  StrongEventsReceiver(MIDIReceiverOptions options, std::shared_ptr<ReceivesMIDIEvents> receiver)
      : EventsBase(options), receiver_(std::move(receiver)) {}

 private:
  void handle(std::span<const core::MIDIEvent> events, std::uint64_t timeStamp,
              const MIDIPacketSource& source) override {
    if (receiver_) {
      callUser([&] { receiver_->eventsReceived(events, timeStamp, source); });
    }
  }

  std::shared_ptr<ReceivesMIDIEvents> receiver_;
};

}  // namespace midikit::io::receive
