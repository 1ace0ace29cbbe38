#pragma once

#include <cstdint>

namespace midikit::core {

/// The three kinds of utility events, as filters name them.
enum class UtilityType : std::uint8_t { noOp, jrClock, jrTimestamp };

}  // namespace midikit::core
