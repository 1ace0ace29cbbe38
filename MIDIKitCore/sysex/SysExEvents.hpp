#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <tuple>
#include <type_traits>
#include <utility>

#include "MIDIKitCore/ParseError.hpp"
#include "MIDIKitCore/numbers/UInt.hpp"
#include "MIDIKitCore/sysex/SysExData.hpp"
#include "MIDIKitCore/sysex/SysExID.hpp"
#include "MIDIKitInternals/Result.hpp"

namespace midikit::core {

// The four system exclusive records: plain values, in which the fields stand in the order that
// leaves no gap. Constructors take them in the order of the message, the group last; `fields()` are
// references in that order.

/// What a constructor of a record takes as its body: the body itself, or what one is made from. The latter
/// makes it in its place, where moving it there would take longer than making it.
template <class T, class Body>
concept MakesBody = std::constructible_from<Body, T>;

/// A manufacturer's system exclusive message of 7-bit bytes. `data` has neither the identifier nor 0xF0 and
/// 0xF7.
struct SysEx7 {
  template <MakesBody<SysEx7Data> Data = SysEx7Data>
  SysEx7(SysExManufacturer manufacturer_, Data&& data_, UInt4 group_ = {})
      : data(std::forward<Data>(data_)), manufacturer(manufacturer_), group(group_) {}

  /// `malformed` if a byte of `data` is 0x80 or above.
  static internals::Result<SysEx7, ParseError> make(SysExManufacturer manufacturer,
                                                    std::span<const std::uint8_t> data, UInt4 group = {});

  friend bool operator==(const SysEx7&, const SysEx7&) = default;
  auto fields() const { return std::tie(manufacturer, data, group); }

  SysEx7Data data;
  SysExManufacturer manufacturer;
  UInt4 group;
};

/// A universal system exclusive message of 7-bit bytes.
struct UniversalSysEx7 {
  template <MakesBody<SysEx7Data> Data = SysEx7Data>
  UniversalSysEx7(UniversalSysExType universalType_, UInt7 deviceID_, UInt7 subID1_, UInt7 subID2_,
                  Data&& data_, UInt4 group_ = {})
      : data(std::forward<Data>(data_)),
        universalType(universalType_),
        deviceID(deviceID_),
        subID1(subID1_),
        subID2(subID2_),
        group(group_) {}

  /// `malformed` if a byte of `data` is 0x80 or above.
  static internals::Result<UniversalSysEx7, ParseError> make(UniversalSysExType universalType, UInt7 deviceID,
                                                             UInt7 subID1, UInt7 subID2,
                                                             std::span<const std::uint8_t> data,
                                                             UInt4 group = {});

  friend bool operator==(const UniversalSysEx7&, const UniversalSysEx7&) = default;
  auto fields() const { return std::tie(universalType, deviceID, subID1, subID2, data, group); }

  SysEx7Data data;
  UniversalSysExType universalType;
  UInt7 deviceID;
  UInt7 subID1;
  UInt7 subID2;
  UInt4 group;
};

/// A manufacturer's system exclusive message of 8-bit bytes (MIDI 2.0). `data` may hold any byte value.
struct SysEx8 {
  template <MakesBody<SysExData> Data = SysExData>
  SysEx8(SysExManufacturer manufacturer_, Data&& data_, std::uint8_t streamID_ = 0, UInt4 group_ = {})
      : data(std::forward<Data>(data_)), manufacturer(manufacturer_), streamID(streamID_), group(group_) {}

  friend bool operator==(const SysEx8&, const SysEx8&) = default;
  auto fields() const { return std::tie(manufacturer, data, streamID, group); }

  SysExData data;
  SysExManufacturer manufacturer;
  std::uint8_t streamID;
  UInt4 group;
};

/// A universal system exclusive message of 8-bit bytes (MIDI 2.0).
struct UniversalSysEx8 {
  template <MakesBody<SysExData> Data = SysExData>
  UniversalSysEx8(UniversalSysExType universalType_, UInt7 deviceID_, UInt7 subID1_, UInt7 subID2_,
                  Data&& data_, std::uint8_t streamID_ = 0, UInt4 group_ = {})
      : data(std::forward<Data>(data_)),
        universalType(universalType_),
        deviceID(deviceID_),
        subID1(subID1_),
        subID2(subID2_),
        streamID(streamID_),
        group(group_) {}

  friend bool operator==(const UniversalSysEx8&, const UniversalSysEx8&) = default;
  auto fields() const { return std::tie(universalType, deviceID, subID1, subID2, data, streamID, group); }

  SysExData data;
  UniversalSysExType universalType;
  UInt7 deviceID;
  UInt7 subID1;
  UInt7 subID2;
  std::uint8_t streamID;
  UInt4 group;
};

/// Where `MIDIEvent` looks for the body.
template <class Record>
inline constexpr bool beginsWithItsBody = std::is_standard_layout_v<Record> && offsetof(Record, data) == 0;
static_assert(beginsWithItsBody<SysEx7> && beginsWithItsBody<UniversalSysEx7> && beginsWithItsBody<SysEx8> &&
              beginsWithItsBody<UniversalSysEx8>);
static_assert(sizeof(SysEx7) <= 24 && sizeof(UniversalSysEx7) <= 24 && sizeof(SysEx8) <= 24 &&
              sizeof(UniversalSysEx8) <= 24);

}  // namespace midikit::core
