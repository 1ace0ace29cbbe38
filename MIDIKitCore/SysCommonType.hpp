#pragma once

#include <cstdint>

namespace midikit::core {

/// The five kinds of system common events, as filters name them.
enum class SysCommonType : std::uint8_t {
  timecodeQuarterFrame,
  songPositionPointer,
  songSelect,
  unofficialBusSelect,
  tuneRequest
};

}  // namespace midikit::core
