#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "MIDIKitCore/MIDI2Parser.hpp"
#include "MIDIKitCore/ParameterNumberEventBundler.hpp"

namespace midikit::core {

/// A record of one Universal MIDI Packet that also tells when it was sent and from where.
template <typename Packet, typename Source>
concept TimedUniversalPacket = UniversalPacket<Packet> && requires(const Packet& packet) {
  { packet.timeStamp } -> std::convertible_to<std::uint64_t>;
  { packet.source } -> std::convertible_to<const Source&>;
};

/// A MIDI2Parser that hands its events to a callback, and can merge RPNs and NRPNs whose data entry arrives
/// in two halves (see ParameterNumberEventBundler).
///
/// Not thread-safe: parseEvents() is called on the serial queue that the constructor takes, and so is the
/// callback.
template <typename Source>
class AdvancedMIDI2Parser {
 public:
  using HandleEvents = typename ParameterNumberEventBundler<Source>::HandleEvents;

  /// `handleEvents` must not destroy the parser. It's held three times: what copies are to share it has to
  /// refer to. `sysExLimit` is that of MIDI2Parser.
  AdvancedMIDI2Parser(karvex::foundation::Clock& clock, karvex::foundation::Queue& queue,
                      HandleEvents handleEvents, std::size_t sysExLimit = MIDI2Parser::defaultSysExLimit)
      : parser_(sysExLimit), pnBundler_(clock, queue, handleEvents), handleEvents_(std::move(handleEvents)) {}

  /// Calls the handler once with the events of the packet, even if there are none.
  void parseEvents(std::span<const std::uint8_t> packet, std::uint64_t timeStamp, const Source& source) {
    parsePacket(packet, timeStamp, source);
  }
  /// The same for a packet given as its words.
  void parseEvents(std::span<const std::uint32_t> packet, std::uint64_t timeStamp, const Source& source) {
    parsePacket(packet, timeStamp, source);
  }

  template <TimedUniversalPacket<Source> Packet>
  void parseEvents(const Packet& packet) {
    parseEvents(packet.bytes, packet.timeStamp, packet.source);
  }

  /// Whether halves of RPNs and NRPNs are merged.
  bool bundleRPNAndNRPNDataEntryLSB = false;

 private:
  template <typename Unit>
  void parsePacket(std::span<const Unit> packet, std::uint64_t timeStamp, const Source& source) {
    // Out of the object, so that a handler may parse another packet.
    auto events = std::exchange(events_, {});
    parser_.parse(packet, events);
    if (bundleRPNAndNRPNDataEntryLSB) {
      pnBundler_.process(events, timeStamp, source);
    }
    handleEvents_(events, timeStamp, source);
    events.clear();
    events_ = std::move(events);
  }

  MIDI2Parser parser_;
  ParameterNumberEventBundler<Source> pnBundler_;
  HandleEvents handleEvents_;
  /// Empty; its memory serves the next packet.
  std::vector<MIDIEvent> events_;
};

}  // namespace midikit::core
