#pragma once

#include <cstdint>

namespace midikit::core {

/// The twelve kinds of channel voice events, as filters name them.
enum class ChanVoiceType : std::uint8_t {
  noteOn,
  noteOff,
  noteCC,
  notePitchBend,
  notePressure,
  noteManagement,
  cc,
  programChange,
  pitchBend,
  pressure,
  rpn,
  nrpn
};

}  // namespace midikit::core
