#pragma once

#include <cstdint>

namespace midikit::core {

/// The six kinds of system real time events, as filters name them.
enum class SysRealTimeType : std::uint8_t { timingClock, start, continue_, stop, activeSensing, systemReset };

}  // namespace midikit::core
