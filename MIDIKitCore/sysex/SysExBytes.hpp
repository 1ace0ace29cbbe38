#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "MIDIKitCore/sysex/SysExEvents.hpp"

namespace midikit::core {

/// Which of the bytes that frame a system exclusive message in a MIDI 1.0 byte stream are wanted.
struct SysExFraming {
  /// 0xF0 ahead.
  bool leading = true;
  /// 0xF7 behind.
  bool trailing = true;
};

/// What stands ahead of `data` in a message: the identifier, and in a universal message the device ID and the
/// two sub-IDs. SysEx7 has the identifier in its 7-bit form, SysEx8 in its 8-bit form.
class SysExHeader {
 public:
  explicit SysExHeader(const SysEx7& event);
  explicit SysExHeader(const UniversalSysEx7& event);
  explicit SysExHeader(const SysEx8& event);
  explicit SysExHeader(const UniversalSysEx8& event);

  std::size_t size() const { return size_; }
  const std::uint8_t* begin() const { return bytes_.data(); }
  const std::uint8_t* end() const { return bytes_.data() + size_; }
  std::uint8_t operator[](std::size_t index) const { return bytes_[index]; }

 private:
  static constexpr std::size_t longest = 5;

  std::array<std::uint8_t, longest> bytes_{};
  std::size_t size_ = 0;
};

/// The MIDI 1.0 form of a 7-bit message, put behind what `into` holds.
void appendSysEx7Bytes(const SysEx7& event, SysExFraming framing, std::vector<std::uint8_t>& into);
void appendSysEx7Bytes(const UniversalSysEx7& event, SysExFraming framing, std::vector<std::uint8_t>& into);

/// The MIDI 1.0 form of a 7-bit message.
std::vector<std::uint8_t> sysEx7Bytes(const SysEx7& event, SysExFraming framing = {});
std::vector<std::uint8_t> sysEx7Bytes(const UniversalSysEx7& event, SysExFraming framing = {});

}  // namespace midikit::core
