#pragma once

#include <cstdint>
#include <span>
#include <tuple>
#include <utility>

#include "MIDIKitCore/ParseError.hpp"
#include "MIDIKitCore/SysExData.hpp"
#include "MIDIKitCore/SysExID.hpp"
#include "MIDIKitCore/UInt4.hpp"
#include "MIDIKitCore/UInt7.hpp"
#include "MIDIKitInternals/Result.hpp"

namespace midikit::core {

// The four system exclusive records: plain values of 16 bytes, in which the fields stand in the order that
// leaves no gap. Constructors take them in the order of the message, the group last; `fields()` are
// references in that order.

/// A manufacturer's system exclusive message of 7-bit bytes. `data` has neither the identifier nor 0xF0 and
/// 0xF7.
struct SysEx7 {
  SysEx7(SysExManufacturer manufacturer_, SysEx7Data data_, UInt4 group_ = {})
      : manufacturer(manufacturer_), group(group_), data(std::move(data_)) {}

  /// `malformed` if a byte of `data` is 0x80 or above.
  static internals::Result<SysEx7, ParseError> make(SysExManufacturer manufacturer,
                                                    std::span<const std::uint8_t> data, UInt4 group = {});

  friend bool operator==(const SysEx7&, const SysEx7&) = default;
  auto fields() const { return std::tie(manufacturer, data, group); }

  SysExManufacturer manufacturer;
  UInt4 group;
  SysEx7Data data;
};

/// A universal system exclusive message of 7-bit bytes.
struct UniversalSysEx7 {
  UniversalSysEx7(UniversalSysExType universalType_, UInt7 deviceID_, UInt7 subID1_, UInt7 subID2_,
                  SysEx7Data data_, UInt4 group_ = {})
      : universalType(universalType_),
        deviceID(deviceID_),
        subID1(subID1_),
        subID2(subID2_),
        group(group_),
        data(std::move(data_)) {}

  /// `malformed` if a byte of `data` is 0x80 or above.
  static internals::Result<UniversalSysEx7, ParseError> make(UniversalSysExType universalType, UInt7 deviceID,
                                                             UInt7 subID1, UInt7 subID2,
                                                             std::span<const std::uint8_t> data,
                                                             UInt4 group = {});

  friend bool operator==(const UniversalSysEx7&, const UniversalSysEx7&) = default;
  auto fields() const { return std::tie(universalType, deviceID, subID1, subID2, data, group); }

  UniversalSysExType universalType;
  UInt7 deviceID;
  UInt7 subID1;
  UInt7 subID2;
  UInt4 group;
  SysEx7Data data;
};

/// A manufacturer's system exclusive message of 8-bit bytes (MIDI 2.0). `data` may hold any byte value.
struct SysEx8 {
  SysEx8(SysExManufacturer manufacturer_, SysExData data_, std::uint8_t streamID_ = 0, UInt4 group_ = {})
      : manufacturer(manufacturer_), streamID(streamID_), group(group_), data(std::move(data_)) {}

  friend bool operator==(const SysEx8&, const SysEx8&) = default;
  auto fields() const { return std::tie(manufacturer, data, streamID, group); }

  SysExManufacturer manufacturer;
  std::uint8_t streamID;
  UInt4 group;
  SysExData data;
};

/// A universal system exclusive message of 8-bit bytes (MIDI 2.0).
struct UniversalSysEx8 {
  UniversalSysEx8(UniversalSysExType universalType_, UInt7 deviceID_, UInt7 subID1_, UInt7 subID2_,
                  SysExData data_, std::uint8_t streamID_ = 0, UInt4 group_ = {})
      : universalType(universalType_),
        deviceID(deviceID_),
        subID1(subID1_),
        subID2(subID2_),
        streamID(streamID_),
        group(group_),
        data(std::move(data_)) {}

  friend bool operator==(const UniversalSysEx8&, const UniversalSysEx8&) = default;
  auto fields() const { return std::tie(universalType, deviceID, subID1, subID2, data, streamID, group); }

  UniversalSysExType universalType;
  UInt7 deviceID;
  UInt7 subID1;
  UInt7 subID2;
  std::uint8_t streamID;
  UInt4 group;
  SysExData data;
};

static_assert(sizeof(SysEx7) == 16 && sizeof(UniversalSysEx7) == 16 && sizeof(SysEx8) == 16 &&
              sizeof(UniversalSysEx8) == 16);

}  // namespace midikit::core
