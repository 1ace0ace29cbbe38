#pragma once

#include <tuple>

#include "MIDIKitCore/numbers/UInt.hpp"

namespace midikit::core {

// The system common and system real-time records: plain values. `fields()` are references to the fields in
// the order of the constructor.

/// MIDI time code, a quarter of a frame.
struct TimecodeQuarterFrame {
  constexpr explicit TimecodeQuarterFrame(UInt7 dataByte_, UInt4 group_ = {})
      : dataByte(dataByte_), group(group_) {}

  friend constexpr bool operator==(const TimecodeQuarterFrame&, const TimecodeQuarterFrame&) = default;
  constexpr auto fields() const { return std::tie(dataByte, group); }

  UInt7 dataByte;
  UInt4 group;
};

/// Where in the song playing goes on. A MIDI beat is six timing clocks.
struct SongPositionPointer {
  constexpr explicit SongPositionPointer(UInt14 midiBeat_, UInt4 group_ = {})
      : group(group_), midiBeat(midiBeat_) {}

  friend constexpr bool operator==(const SongPositionPointer&, const SongPositionPointer&) = default;
  constexpr auto fields() const { return std::tie(midiBeat, group); }

  UInt4 group;
  UInt14 midiBeat;
};

/// Which song is to be played.
struct SongSelect {
  constexpr explicit SongSelect(UInt7 number_, UInt4 group_ = {}) : number(number_), group(group_) {}

  friend constexpr bool operator==(const SongSelect&, const SongSelect&) = default;
  constexpr auto fields() const { return std::tie(number, group); }

  UInt7 number;
  UInt4 group;
};

/// Status 0xF5, which the MIDI 1.0 specification leaves undefined and some interfaces read as the choice of a
/// port.
struct UnofficialBusSelect {
  constexpr explicit UnofficialBusSelect(UInt7 bus_, UInt4 group_ = {}) : bus(bus_), group(group_) {}

  friend constexpr bool operator==(const UnofficialBusSelect&, const UnofficialBusSelect&) = default;
  constexpr auto fields() const { return std::tie(bus, group); }

  UInt7 bus;
  UInt4 group;
};

/// Analog synthesizers are to tune their oscillators.
struct TuneRequest {
  constexpr explicit TuneRequest(UInt4 group_ = {}) : group(group_) {}

  friend constexpr bool operator==(const TuneRequest&, const TuneRequest&) = default;
  constexpr auto fields() const { return std::tie(group); }

  UInt4 group;
};

/// The clock, 24 to a quarter note.
struct TimingClock {
  constexpr explicit TimingClock(UInt4 group_ = {}) : group(group_) {}

  friend constexpr bool operator==(const TimingClock&, const TimingClock&) = default;
  constexpr auto fields() const { return std::tie(group); }

  UInt4 group;
};

/// Play from the beginning.
struct Start {
  constexpr explicit Start(UInt4 group_ = {}) : group(group_) {}

  friend constexpr bool operator==(const Start&, const Start&) = default;
  constexpr auto fields() const { return std::tie(group); }

  UInt4 group;
};

/// Play on from the song position.
struct Continue {
  constexpr explicit Continue(UInt4 group_ = {}) : group(group_) {}

  friend constexpr bool operator==(const Continue&, const Continue&) = default;
  constexpr auto fields() const { return std::tie(group); }

  UInt4 group;
};

/// Stop playing.
struct Stop {
  constexpr explicit Stop(UInt4 group_ = {}) : group(group_) {}

  friend constexpr bool operator==(const Stop&, const Stop&) = default;
  constexpr auto fields() const { return std::tie(group); }

  UInt4 group;
};

/// The sender is still there.
struct ActiveSensing {
  constexpr explicit ActiveSensing(UInt4 group_ = {}) : group(group_) {}

  friend constexpr bool operator==(const ActiveSensing&, const ActiveSensing&) = default;
  constexpr auto fields() const { return std::tie(group); }

  UInt4 group;
};

/// Everything back to what it was at power-up.
struct SystemReset {
  constexpr explicit SystemReset(UInt4 group_ = {}) : group(group_) {}

  friend constexpr bool operator==(const SystemReset&, const SystemReset&) = default;
  constexpr auto fields() const { return std::tie(group); }

  UInt4 group;
};

}  // namespace midikit::core
