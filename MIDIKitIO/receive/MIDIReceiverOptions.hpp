#pragma once

#include <cstdint>

namespace midikit::io {

/// How received packets become events: a set of flags. A plain value.
///
///     MIDIReceiverOptions::noteOnZeroAsNoteOff | MIDIReceiverOptions::dropClockAndSensing
class MIDIReceiverOptions {
 public:
  /// MIDI 1.0 note-ons with velocity 0 become note-offs. Universal packets are read as they are.
  static const MIDIReceiverOptions noteOnZeroAsNoteOff;
  /// Timing clock and active sensing are left out.
  static const MIDIReceiverOptions dropClockAndSensing;
  /// Universal packets are read by a core::AdvancedMIDI2Parser, which can merge RPNs and NRPNs.
  static const MIDIReceiverOptions bundleParameterNumbers;

  /// No flag.
  constexpr MIDIReceiverOptions() = default;
  /// Bits without a flag are kept and have no effect.
  constexpr explicit MIDIReceiverOptions(std::int64_t rawValue) : rawValue_(rawValue) {}

  constexpr std::int64_t rawValue() const { return rawValue_; }

  /// Whether all flags of `other` are set.
  constexpr bool contains(MIDIReceiverOptions other) const {
    return (rawValue_ & other.rawValue_) == other.rawValue_;
  }

  friend constexpr MIDIReceiverOptions operator|(MIDIReceiverOptions a, MIDIReceiverOptions b) {
    return MIDIReceiverOptions(a.rawValue_ | b.rawValue_);
  }
  friend constexpr bool operator==(MIDIReceiverOptions, MIDIReceiverOptions) = default;

 private:
  std::int64_t rawValue_ = 0;
};

inline constexpr MIDIReceiverOptions MIDIReceiverOptions::noteOnZeroAsNoteOff{0b001};
inline constexpr MIDIReceiverOptions MIDIReceiverOptions::dropClockAndSensing{0b010};
inline constexpr MIDIReceiverOptions MIDIReceiverOptions::bundleParameterNumbers{0b100};

}  // namespace midikit::io
