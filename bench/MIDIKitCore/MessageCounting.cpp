#include "bench/MIDIKitCore/MessageCounting.hpp"

namespace midikit::bench {

void ByteStreamCounter::begin(std::uint8_t status) {
  static constexpr std::uint8_t ofChannelVoice[] = {2, 2, 2, 2, 1, 1, 2};
  static constexpr std::uint8_t ofSystemCommon[] = {0, 1, 2, 1, 0, 0, 0, 0};
  messages_ += isInSysEx_ ? 1 : 0;
  isInSysEx_ = status == 0xF0;
  runs_ = status < 0xF0;
  needed_ = runs_ ? ofChannelVoice[(status >> 4) - 8] : ofSystemCommon[status & 7];
  held_ = 0;
  messages_ += status == 0xF6 ? 1 : 0;
}

void ByteStreamCounter::count(std::span<const std::uint8_t> packet) {
  for (const auto byte : packet) {
    if (byte >= 0xF8) {
      messages_ += byte == 0xF9 || byte == 0xFD ? 0 : 1;
    } else if (byte >= 0x80) {
      begin(byte);
    } else if (needed_ != 0 && ++held_ == needed_) {
      ++messages_;
      held_ = 0;
      needed_ = runs_ ? needed_ : 0;
    }
  }
}

bool endsMessage(std::span<const std::uint8_t> packet) {
  switch (packet[0] >> 4) {
    case 0x0:
      return packet[1] >> 4 <= 2;
    case 0x1:
      return packet[1] >= 0xF0;
    case 0x2:
      return packet[1] >= 0x80;
    case 0x4:
      return packet[1] >> 4 != 7;
    case 0x3:
    case 0x5:
      return packet[1] >> 4 == 0 || packet[1] >> 4 == 3;
    default:
      return false;
  }
}

}  // namespace midikit::bench
