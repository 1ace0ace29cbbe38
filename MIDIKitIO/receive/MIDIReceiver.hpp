#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "MIDIKitIO/packets/AnyMIDIPacket.hpp"
#include "MIDIKitIO/receive/MIDIReceiverOptions.hpp"
#include "MIDIKitIO/receive/ReceivesMIDIEvents.hpp"

namespace midikit::io {

/// What is wanted of received MIDI: a sum type, and a value. A port makes a handler of it, which keeps
/// parsers for as long as the port lives; making two ports from one receiver makes two.
///
/// Callables run on the manager's eventQueue: one at a time for all ports of the manager, each after what the
/// one before it wrote. They are never reentered: what a callable sends to a port of the same manager arrives
/// after it has returned. They must not wait for that queue. What they throw goes into the debug log, and the
/// next packet comes all the same. A null callable is not called. For every call:
///
/// Thread-safe: yes, as a value is.
/// Realtime-safe: no, it allocates.
class MIDIReceiver {
 public:
  /// The arguments are those of ReceivesMIDIEvents::eventsReceived.
  using EventsHandler = std::function<void(std::span<const core::MIDIEvent> events, std::uint64_t timeStamp,
                                           const MIDIPacketSource& source)>;
  using PacketHandler = std::function<void(const AnyMIDIPacket& packet)>;
  using TextHandler = std::function<void(const std::string& text)>;

  /// How a receiver refers to an object.
  enum class ReceiverRefStorage : std::uint8_t { weakly, strongly };

  struct Group {
    std::vector<MIDIReceiver> receivers;
  };
  struct Events {
    MIDIReceiverOptions options;
    EventsHandler handler;
  };
  struct EventsLogging {
    MIDIReceiverOptions options;
    TextHandler handler;
  };
  struct RawData {
    PacketHandler handler;
  };
  struct RawDataLogging {
    TextHandler handler;
  };
  struct Strong {
    std::shared_ptr<ReceivesMIDIEvents> receiver;
    MIDIReceiverOptions options;
  };
  struct Weak {
    std::weak_ptr<ReceivesMIDIEvents> receiver;
    MIDIReceiverOptions options;
  };
  using Case = std::variant<Group, Events, EventsLogging, RawData, RawDataLogging, Strong, Weak>;

  /// Each packet goes to all of them in their order. Each reads the stream by itself.
  static MIDIReceiver group(std::vector<MIDIReceiver> receivers) { return Case(Group{std::move(receivers)}); }
  /// The events of each packet that has any.
  static MIDIReceiver events(MIDIReceiverOptions options, EventsHandler handler) {
    return Case(Events{options, std::move(handler)});
  }
  /// The events of each packet as one line of text (see ReceivedText.hpp).
  static MIDIReceiver eventsLogging(MIDIReceiverOptions options, TextHandler handler = nullptr) {
    return Case(EventsLogging{options, std::move(handler)});
  }
  /// Each packet, whatever is in it.
  static MIDIReceiver rawData(PacketHandler handler) { return Case(RawData{std::move(handler)}); }
  /// Each packet as one line of text.
  static MIDIReceiver rawDataLogging(TextHandler handler = nullptr) {
    return Case(RawDataLogging{std::move(handler)});
  }
  /// Events for an object that lives at least as long as the port.
  static MIDIReceiver strong(std::shared_ptr<ReceivesMIDIEvents> receiver, MIDIReceiverOptions options) {
    return Case(Strong{std::move(receiver), options});
  }
  /// Events for an object for as long as it lives. Neither this value nor the port keeps it alive.
  static MIDIReceiver weak(std::weak_ptr<ReceivesMIDIEvents> receiver, MIDIReceiverOptions options) {
    return Case(Weak{std::move(receiver), options});
  }
  /// `strong` or `weak`.
  static MIDIReceiver object(const std::shared_ptr<ReceivesMIDIEvents>& receiver, ReceiverRefStorage storage,
                             MIDIReceiverOptions options) {
    return storage == ReceiverRefStorage::strongly ? strong(receiver, options) : weak(receiver, options);
  }

  /// Which case it is, for `std::visit` or `std::get_if`.
  const Case& asCase() const { return case_; }

 private:
  MIDIReceiver(Case itsCase) : case_(std::move(itsCase)) {}

  Case case_;
};

}  // namespace midikit::io
