#pragma once

#include <optional>
#include <span>
#include <string_view>

#include "MIDIKitCore/sysex/SysExManufacturer.hpp"

namespace midikit::core {

/// A row of the MIDI Association's published list of SysEx manufacturer ID numbers. Immutable, like the
/// tables below: any thread.
struct SysExManufacturerRow {
  SysExManufacturer manufacturer;
  /// UTF-8, in the list's wording.
  std::string_view name;
};

/// 631 rows: 0x7D first, then the one-byte IDs and the three-byte IDs, each ascending.
std::span<const SysExManufacturerRow> sysExManufacturers();

/// IDs that were given out since, ascending.
std::span<const SysExManufacturerRow> laterSysExManufacturers();

/// The name that either table has for `manufacturer`; none for an ID that nobody holds.
std::optional<std::string_view> manufacturerName(SysExManufacturer manufacturer);

}  // namespace midikit::core
