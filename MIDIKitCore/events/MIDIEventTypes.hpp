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

/// The five kinds of system common events, as filters name them.
enum class SysCommonType : std::uint8_t {
  timecodeQuarterFrame,
  songPositionPointer,
  songSelect,
  unofficialBusSelect,
  tuneRequest
};

/// The four kinds of system exclusive events, as filters name them.
enum class SysExType : std::uint8_t { sysEx7, universalSysEx7, sysEx8, universalSysEx8 };

/// The six kinds of system real time events, as filters name them.
enum class SysRealTimeType : std::uint8_t { timingClock, start, continue_, stop, activeSensing, systemReset };

/// The three kinds of utility events, as filters name them.
enum class UtilityType : std::uint8_t { noOp, jrClock, jrTimestamp };

}  // namespace midikit::core
