#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "MIDIKitCore/controllers/ParameterNumber.hpp"
#include "MIDIKitCore/numbers/UInt.hpp"

namespace midikit::core {

/// A registered parameter number with its data entry. A sum type: `kind()` tells the case, and each has a
/// factory of its name. The payload is what the data entry carries: `dataEntryMSB()` are the semitones of a
/// pitch bend sensitivity and `dataEntryLSB()` its cents, both together the value of a fine tuning.
class RegisteredController {
 public:
  enum class Kind : std::uint8_t {
    pitchBendSensitivity,
    channelFineTuning,
    channelCoarseTuning,
    tuningProgramChange,
    tuningBankSelect,
    modulationDepthRange,
    mpeConfigurationMessage,
    raw,
    threeDimensionalAzimuthAngle,
    threeDimensionalElevationAngle,
    threeDimensionalGain,
    threeDimensionalDistanceRatio,
    threeDimensionalMaximumDistance,
    threeDimensionalGainAtMaximumDistance,
    threeDimensionalReferenceDistanceRatio,
    threeDimensionalPanSpreadAngle,
    threeDimensionalRollAngle,
    null,
  };

  static constexpr MIDIParameterNumberType type = MIDIParameterNumberType::registered;

  /// The case of a parameter number, with the data entry as far as the case has room for it: a byte that it
  /// needs counts as 0 if it's absent, one that it doesn't have is ignored. A number without a case gives
  /// `raw`.
  static constexpr RegisteredController fromWire(UInt7Pair parameter, std::optional<UInt7> dataEntryMSB,
                                                 std::optional<UInt7> dataEntryLSB);

  static constexpr RegisteredController pitchBendSensitivity(UInt7 semitones, UInt7 cents) {
    return of(Kind::pitchBendSensitivity, semitones, cents);
  }
  static constexpr RegisteredController channelFineTuning(UInt14 value) {
    return of(Kind::channelFineTuning, value.uint7Pair().msb, value.uint7Pair().lsb);
  }
  static constexpr RegisteredController channelCoarseTuning(UInt7 value) {
    return of(Kind::channelCoarseTuning, value);
  }
  /// `number` is zero-based.
  static constexpr RegisteredController tuningProgramChange(UInt7 number) {
    return of(Kind::tuningProgramChange, number);
  }
  /// `number` is zero-based.
  static constexpr RegisteredController tuningBankSelect(UInt7 number) {
    return of(Kind::tuningBankSelect, number);
  }
  static constexpr RegisteredController modulationDepthRange(std::optional<UInt7> dataEntryMSB,
                                                             std::optional<UInt7> dataEntryLSB) {
    return of(Kind::modulationDepthRange, dataEntryMSB, dataEntryLSB);
  }
  static constexpr RegisteredController mpeConfigurationMessage(std::optional<UInt7> dataEntryMSB,
                                                                std::optional<UInt7> dataEntryLSB) {
    return of(Kind::mpeConfigurationMessage, dataEntryMSB, dataEntryLSB);
  }
  static constexpr RegisteredController raw(UInt7Pair parameter, std::optional<UInt7> dataEntryMSB,
                                            std::optional<UInt7> dataEntryLSB) {
    return RegisteredController(Kind::raw, parameter, dataEntryMSB, dataEntryLSB);
  }
  static constexpr RegisteredController threeDimensionalAzimuthAngle(UInt7 dataEntryMSB, UInt7 dataEntryLSB) {
    return of(Kind::threeDimensionalAzimuthAngle, dataEntryMSB, dataEntryLSB);
  }
  static constexpr RegisteredController threeDimensionalElevationAngle(UInt7 dataEntryMSB,
                                                                       UInt7 dataEntryLSB) {
    return of(Kind::threeDimensionalElevationAngle, dataEntryMSB, dataEntryLSB);
  }
  static constexpr RegisteredController threeDimensionalGain(UInt7 dataEntryMSB, UInt7 dataEntryLSB) {
    return of(Kind::threeDimensionalGain, dataEntryMSB, dataEntryLSB);
  }
  static constexpr RegisteredController threeDimensionalDistanceRatio(UInt7 dataEntryMSB,
                                                                      UInt7 dataEntryLSB) {
    return of(Kind::threeDimensionalDistanceRatio, dataEntryMSB, dataEntryLSB);
  }
  static constexpr RegisteredController threeDimensionalMaximumDistance(UInt7 dataEntryMSB,
                                                                        UInt7 dataEntryLSB) {
    return of(Kind::threeDimensionalMaximumDistance, dataEntryMSB, dataEntryLSB);
  }
  static constexpr RegisteredController threeDimensionalGainAtMaximumDistance(UInt7 dataEntryMSB,
                                                                              UInt7 dataEntryLSB) {
    return of(Kind::threeDimensionalGainAtMaximumDistance, dataEntryMSB, dataEntryLSB);
  }
  static constexpr RegisteredController threeDimensionalReferenceDistanceRatio(UInt7 dataEntryMSB,
                                                                               UInt7 dataEntryLSB) {
    return of(Kind::threeDimensionalReferenceDistanceRatio, dataEntryMSB, dataEntryLSB);
  }
  static constexpr RegisteredController threeDimensionalPanSpreadAngle(UInt7 dataEntryMSB,
                                                                       UInt7 dataEntryLSB) {
    return of(Kind::threeDimensionalPanSpreadAngle, dataEntryMSB, dataEntryLSB);
  }
  static constexpr RegisteredController threeDimensionalRollAngle(UInt7 dataEntryMSB, UInt7 dataEntryLSB) {
    return of(Kind::threeDimensionalRollAngle, dataEntryMSB, dataEntryLSB);
  }
  static constexpr RegisteredController null() { return of(Kind::null); }

  constexpr Kind kind() const { return kind_; }
  constexpr UInt7Pair parameterNumber() const { return parameter_; }
  constexpr std::optional<UInt7> dataEntryMSB() const { return msb_; }
  constexpr std::optional<UInt7> dataEntryLSB() const { return lsb_; }

  /// As in "pitchBendSensitivity(semitones: 2, cents: 0)"; bytes of a data entry print in decimal, an absent
  /// one as "nil (0)".
  std::string description() const;

  friend constexpr bool operator==(const RegisteredController&, const RegisteredController&) = default;

 private:
  constexpr RegisteredController(Kind kind, UInt7Pair parameter, std::optional<UInt7> msb,
                                 std::optional<UInt7> lsb)
      : kind_(kind), parameter_(parameter), msb_(msb), lsb_(lsb) {}

  static constexpr RegisteredController of(Kind kind, std::optional<UInt7> msb = {},
                                           std::optional<UInt7> lsb = {}) {
    return {kind, parameterNumberOf(kind), msb, lsb};
  }

  /// The number that the MIDI specifications give; `raw` has none.
  static constexpr UInt7Pair parameterNumberOf(Kind kind);
  static constexpr Kind kindOf(UInt7Pair parameter);

  static constexpr std::uint8_t threeDimensionalMSB = 61;

  Kind kind_;
  UInt7Pair parameter_;
  std::optional<UInt7> msb_;
  std::optional<UInt7> lsb_;
};

constexpr UInt7Pair RegisteredController::parameterNumberOf(Kind kind) {
  const auto position = static_cast<std::uint8_t>(kind);
  if (kind < Kind::raw) {
    return {.msb = UInt7(), .lsb = UInt7::unchecked(position)};
  }
  if (kind == Kind::null) {
    return {.msb = UInt7::maximum(), .lsb = UInt7::maximum()};
  }
  constexpr auto first = static_cast<std::uint8_t>(Kind::threeDimensionalAzimuthAngle);
  return {.msb = UInt7(threeDimensionalMSB), .lsb = UInt7(position - first)};
}

constexpr RegisteredController::Kind RegisteredController::kindOf(UInt7Pair parameter) {
  constexpr auto first = static_cast<std::uint8_t>(Kind::threeDimensionalAzimuthAngle);
  constexpr auto last = static_cast<std::uint8_t>(Kind::threeDimensionalRollAngle);
  const std::uint8_t msb = parameter.msb.value();
  const std::uint8_t lsb = parameter.lsb.value();
  if (msb == 0 && lsb < static_cast<std::uint8_t>(Kind::raw)) {
    return static_cast<Kind>(lsb);
  }
  if (msb == threeDimensionalMSB && lsb <= last - first) {
    return static_cast<Kind>(first + lsb);
  }
  return msb == 127 && lsb == 127 ? Kind::null : Kind::raw;
}

constexpr RegisteredController RegisteredController::fromWire(UInt7Pair parameter,
                                                              std::optional<UInt7> dataEntryMSB,
                                                              std::optional<UInt7> dataEntryLSB) {
  switch (const Kind kind = kindOf(parameter)) {
    case Kind::raw:
    case Kind::modulationDepthRange:
    case Kind::mpeConfigurationMessage:
      return {kind, parameter, dataEntryMSB, dataEntryLSB};
    case Kind::channelCoarseTuning:
    case Kind::tuningProgramChange:
    case Kind::tuningBankSelect:
      return of(kind, dataEntryMSB.value_or(UInt7()));
    case Kind::null:
      return null();
    default:
      return of(kind, dataEntryMSB.value_or(UInt7()), dataEntryLSB.value_or(UInt7()));
  }
}

static_assert(MIDIParameterNumber<RegisteredController>);

}  // namespace midikit::core

template <>
struct std::hash<midikit::core::RegisteredController> {
  std::size_t operator()(const midikit::core::RegisteredController& parameter) const noexcept;
};
