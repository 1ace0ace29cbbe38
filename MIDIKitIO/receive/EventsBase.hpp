#pragma once

#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "MIDIKitCore/AdvancedMIDI2Parser.hpp"
#include "MIDIKitCore/MIDI1Parser.hpp"
#include "MIDIKitCore/MIDI2Parser.hpp"
#include "MIDIKitIO/receive/MIDIReceiverOptions.hpp"
#include "MIDIKitIO/receive/MIDIReceiverProtocol.hpp"
#include "MIDIKitIO/receive/ReceiveContext.hpp"

namespace midikit::io::receive {

/// Reads the packets of one stream as events, and remembers what the protocols want remembered: the running
/// status, and system exclusive messages under way. What derives from it says what becomes of the events.
///
/// Packets of short events allocate nothing once lists and buffers have grown.
class EventsBase : public MIDIReceiverProtocol, public std::enable_shared_from_this<EventsBase> {
 public:
  using AdvancedParser = core::AdvancedMIDI2Parser<MIDIPacketSource>;

  /// The one way to make a handler: it lives in a shared pointer, so that late events find out whether it is
  /// still there.
  template <std::derived_from<EventsBase> Handler, class... Arguments>
  static std::shared_ptr<Handler> create(const ReceiveContext& context, MIDIReceiverOptions options,
                                         Arguments&&... arguments) {
    auto handler = std::make_shared<Handler>(options, std::forward<Arguments>(arguments)...);
    handler->adopt(context);
    return handler;
  }

  void packetsReceived(std::span<const AnyMIDIPacket> packets) final;
  void universalPacketsReceived(std::span<const AnyMIDIPacket> packets,
                                core::MIDIProtocolVersion protocol) final;

  MIDIReceiverOptions options() const { return options_; }

  /// The parser of universal packets, null without `bundleParameterNumbers`. It merges nothing until its
  /// `bundleRPNAndNRPNDataEntryLSB` is set. On eventQueue alone.
  AdvancedParser* advancedMIDI2Parser() { return advancedMIDI2Parser_ ? &*advancedMIDI2Parser_ : nullptr; }

 protected:
  explicit EventsBase(MIDIReceiverOptions options);

  /// Takes what the options leave of the events of one packet, at least one, which live during the call
  /// alone. Must not throw.
  virtual void handle(std::span<const core::MIDIEvent> events, std::uint64_t timeStamp,
                      const MIDIPacketSource& source) = 0;

 private:
  void adopt(const ReceiveContext& context);
  template <class Parse>
  void read(const AnyMIDIPacket& packet, const Parse& parse);
  void handleWanted(std::span<const core::MIDIEvent> events, std::uint64_t timeStamp,
                    const MIDIPacketSource& source);

  MIDIReceiverOptions options_;
  core::MIDI1Parser midi1Parser_;
  std::optional<core::MIDI2Parser> midi2Parser_;
  /// The way to eventQueue for the parser below.
  std::unique_ptr<karvex::foundation::Queue> lateEvents_;
  std::optional<AdvancedParser> advancedMIDI2Parser_;
  /// Empty between packets; their memory serves the next one.
  std::vector<core::MIDIEvent> events_;
  std::vector<core::MIDIEvent> wanted_;
};

}  // namespace midikit::io::receive
