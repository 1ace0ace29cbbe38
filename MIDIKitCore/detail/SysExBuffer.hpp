#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "MIDIKitCore/wire/MIDIUMPFields.hpp"

namespace midikit::core {

/// The bytes so far of a system exclusive message that arrives in pieces. Empty means that no message is
/// under way. Not thread-safe.
class SysExBuffer {
 public:
  /// The most memory, in bytes, that stays behind a message; what a rare long one needed is given back.
  static constexpr std::size_t keptCapacity = 4096;

  bool empty() const { return bytes_.empty(); }
  std::span<const std::uint8_t> bytes() const { return bytes_; }
  /// How many bytes of memory it has, used or not.
  std::size_t capacity() const { return bytes_.capacity(); }

  /// Puts a piece behind the others. A message that grows beyond `limit` bytes is dropped. The memory grows
  /// by doubling, so there may be almost twice as much of it.
  void append(std::span<const std::uint8_t> piece, std::size_t limit) {
    if (piece.size() > limit - bytes_.size()) {
      clear();
      return;
    }
    bytes_.insert(bytes_.end(), piece.begin(), piece.end());
  }

  /// Takes the piece of a message in packets. Returns the message if it is whole now, valid until the next
  /// call of anything but bytes(); so a caller clears the buffer once it has read what came with `end`. A
  /// complete one leaves what is under way alone, a start begins afresh, and what has no beginning is
  /// dropped.
  std::optional<std::span<const std::uint8_t>> take(MIDIUMPSysExStatusField status,
                                                    std::span<const std::uint8_t> piece, std::size_t limit) {
    switch (status) {
      case MIDIUMPSysExStatusField::complete:
        return piece;
      case MIDIUMPSysExStatusField::start:
        clear();
        append(piece, limit);
        return std::nullopt;
      case MIDIUMPSysExStatusField::continue_:
      case MIDIUMPSysExStatusField::end:
        break;
    }
    if (empty()) {
      return std::nullopt;
    }
    append(piece, limit);
    return status == MIDIUMPSysExStatusField::end && !empty() ? std::optional(bytes()) : std::nullopt;
  }

  /// Drops the message. At most `keptCapacity` stays for the next one.
  void clear() {
    if (bytes_.capacity() > keptCapacity) {
      std::vector<std::uint8_t>().swap(bytes_);
    }
    bytes_.clear();
  }

 private:
  std::vector<std::uint8_t> bytes_;
};

}  // namespace midikit::core
