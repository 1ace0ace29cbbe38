#include "MIDIKitIO/receive/ReceiveHandler.hpp"

#include <variant>
#include <vector>

#include "MIDIKitIO/receive/Events.hpp"
#include "MIDIKitIO/receive/Group.hpp"
#include "MIDIKitIO/receive/RawData.hpp"
#include "MIDIKitIO/receive/ReceivedText.hpp"
#include "MIDIKitIO/receive/StrongEventsReceiver.hpp"
#include "MIDIKitIO/receive/WeakEventsReceiver.hpp"

namespace midikit::io {
namespace {

using Handler = std::shared_ptr<MIDIReceiverProtocol>;
using receive::EventsBase;

/// One call for each case of a receiver.
struct HandlerMaker {
  const ReceiveContext& context;

  Handler operator()(const MIDIReceiver::Group& group) const {
    std::vector<Handler> handlers;
    handlers.reserve(group.receivers.size());
    for (const auto& receiver : group.receivers) {
      handlers.push_back(makeReceiveHandler(receiver, context));
    }
    return std::make_shared<receive::Group>(std::move(handlers));
  }
  Handler operator()(const MIDIReceiver::Events& events) const {
    return EventsBase::create<receive::Events>(context, events.options, events.handler);
  }
  Handler operator()(const MIDIReceiver::EventsLogging& logging) const {
    MIDIReceiver::EventsHandler handler;
    if (logging.handler) {
      handler = [log = logging.handler](auto events, auto timeStamp, const auto& source) {
        log(textOf(events, timeStamp, source));
      };
    }
    return EventsBase::create<receive::Events>(context, logging.options, std::move(handler));
  }
  Handler operator()(const MIDIReceiver::RawData& raw) const {
    return std::make_shared<receive::RawData>(raw.handler);
  }
  Handler operator()(const MIDIReceiver::RawDataLogging& logging) const {
    MIDIReceiver::PacketHandler handler;
    if (logging.handler) {
      handler = [log = logging.handler](const AnyMIDIPacket& packet) { log(textOf(packet)); };
    }
    return std::make_shared<receive::RawData>(std::move(handler));
  }
  Handler operator()(const MIDIReceiver::Strong& strong) const {
    return EventsBase::create<receive::StrongEventsReceiver>(context, strong.options, strong.receiver);
  }
  Handler operator()(const MIDIReceiver::Weak& weak) const {
    return EventsBase::create<receive::WeakEventsReceiver>(context, weak.options, weak.receiver);
  }
};

}  // namespace

std::shared_ptr<MIDIReceiverProtocol> makeReceiveHandler(const MIDIReceiver& receiver,
                                                         const ReceiveContext& context) {
  return std::visit(HandlerMaker{context}, receiver.asCase());
}

}  // namespace midikit::io
