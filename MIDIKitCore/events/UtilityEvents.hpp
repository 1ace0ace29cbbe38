#pragma once

#include <cstdint>
#include <tuple>

#include "MIDIKitCore/numbers/UInt.hpp"

namespace midikit::core {

// The utility records, which only exist in Universal MIDI Packets: plain values. `time` counts in 1/31250 of
// a second. `fields()` are references to the fields in the order of the constructor.

/// Nothing.
struct NoOp {
  constexpr explicit NoOp(UInt4 group_ = {}) : group(group_) {}

  friend constexpr bool operator==(const NoOp&, const NoOp&) = default;
  constexpr auto fields() const { return std::tie(group); }

  UInt4 group;
};

/// Jitter reduction: the time of the sender.
struct JRClock {
  constexpr explicit JRClock(std::uint16_t time_, UInt4 group_ = {}) : time(time_), group(group_) {}

  friend constexpr bool operator==(const JRClock&, const JRClock&) = default;
  constexpr auto fields() const { return std::tie(time, group); }

  std::uint16_t time;
  UInt4 group;
};

/// Jitter reduction: when what follows in the packet is to happen.
struct JRTimestamp {
  constexpr explicit JRTimestamp(std::uint16_t time_, UInt4 group_ = {}) : time(time_), group(group_) {}

  friend constexpr bool operator==(const JRTimestamp&, const JRTimestamp&) = default;
  constexpr auto fields() const { return std::tie(time, group); }

  std::uint16_t time;
  UInt4 group;
};

}  // namespace midikit::core
