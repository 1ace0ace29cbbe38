#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

#include "MIDIKitInternals/InlineVector.hpp"

namespace midikit::io {

/// One packet of a list: the bytes of whole MIDI 1.0 messages that share a moment.
struct MIDIPacketView {
  std::uint64_t timeStamp = 0;  ///< in units of MIDIService::machAbsoluteTime
  std::span<const std::uint8_t> bytes;
};

/// A byte-oriented list of packets in a buffer whose size its maker fixes. Its bookkeeping takes `headerSize`
/// bytes of that buffer, and each packet `packetHeaderSize` beside its own bytes.
///
/// One packet of up to `shortPacketBytes` needs no memory of its own, whatever the size of the buffer.
class MIDIPacketList {
 public:
  static constexpr std::size_t headerSize = 4;
  static constexpr std::size_t packetHeaderSize = 10;
  static constexpr std::size_t shortPacketBytes = 16;

  /// An empty list in a buffer of `size` bytes (`MIDIPacketListInit`); without a size it grows as needed.
  explicit MIDIPacketList(std::size_t size = std::numeric_limits<std::size_t>::max()) : size_(size) {}

  /// Adds one packet after the others (`MIDIPacketListAdd`). False, and nothing changes, when the buffer has
  /// no room for it.
  [[nodiscard]] bool add(std::uint64_t timeStamp, std::span<const std::uint8_t> bytes);

  [[nodiscard]] std::size_t packetCount() const { return packets_.size(); }
  [[nodiscard]] MIDIPacketView packet(std::size_t index) const {
    const Place& place = packets_.at(index);
    return {place.timeStamp, {bytes_.data() + place.offset, place.length}};
  }

 private:
  struct Place {
    std::uint64_t timeStamp;
    std::size_t offset;
    std::size_t length;
  };

  std::size_t size_;
  std::size_t used_ = headerSize;
  internals::InlineVector<std::uint8_t, shortPacketBytes> bytes_;
  internals::InlineVector<Place, 1> packets_;
};

}  // namespace midikit::io
