#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace midikit::bench {

// The bounds of the parsers: state machines that find the messages of an input and do nothing but count them.

/// Counts the messages of a byte stream from one packet to the next.
class ByteStreamCounter {
 public:
  void count(std::span<const std::uint8_t> packet);
  std::size_t messages() const { return messages_; }

 private:
  void begin(std::uint8_t status);

  std::size_t messages_ = 0;
  std::uint8_t needed_ = 0;
  std::uint8_t held_ = 0;
  bool runs_ = false;
  bool isInSysEx_ = false;
};

/// Whether a Universal MIDI Packet ends a message: any packet that is known, but for the first ones of a
/// system exclusive message.
bool endsMessage(std::span<const std::uint8_t> packet);

}  // namespace midikit::bench
