#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "MIDIKitCore/controllers/ParameterNumber.hpp"

namespace midikit::core {

/// An assignable (non-registered) parameter number with its data entry, or `null`, which ends the entry. A
/// sum type: `kind()` tells the case.
class AssignableController {
 public:
  enum class Kind : std::uint8_t { raw, null };

  static constexpr MIDIParameterNumberType type = MIDIParameterNumberType::assignable;

  /// 127, 127 is `null` whatever the data, every other number `raw`.
  static constexpr AssignableController fromWire(UInt7Pair parameter, std::optional<UInt7> dataEntryMSB,
                                                 std::optional<UInt7> dataEntryLSB) {
    return parameter == nullParameter ? null() : raw(parameter, dataEntryMSB, dataEntryLSB);
  }

  static constexpr AssignableController raw(UInt7Pair parameter, std::optional<UInt7> dataEntryMSB,
                                            std::optional<UInt7> dataEntryLSB) {
    return {Kind::raw, parameter, dataEntryMSB, dataEntryLSB};
  }

  /// Parameter number 127, 127, without data.
  static constexpr AssignableController null() { return {Kind::null, nullParameter, {}, {}}; }

  constexpr Kind kind() const { return kind_; }
  constexpr UInt7Pair parameterNumber() const { return parameter_; }
  constexpr std::optional<UInt7> dataEntryMSB() const { return msb_; }
  constexpr std::optional<UInt7> dataEntryLSB() const { return lsb_; }

  /// "raw(param: [msb: 0x02, lsb: 0x03], dataMSB: 5, dataLSB: nil (0))" or "null".
  std::string description() const;

  friend constexpr bool operator==(const AssignableController&, const AssignableController&) = default;

 private:
  static constexpr UInt7Pair nullParameter = {.msb = UInt7::maximum(), .lsb = UInt7::maximum()};

  constexpr AssignableController(Kind kind, UInt7Pair parameter, std::optional<UInt7> msb,
                                 std::optional<UInt7> lsb)
      : kind_(kind), parameter_(parameter), msb_(msb), lsb_(lsb) {}

  Kind kind_;
  UInt7Pair parameter_;
  std::optional<UInt7> msb_;
  std::optional<UInt7> lsb_;
};

static_assert(MIDIParameterNumber<AssignableController>);

}  // namespace midikit::core

template <>
struct std::hash<midikit::core::AssignableController> {
  std::size_t operator()(const midikit::core::AssignableController& parameter) const noexcept;
};
