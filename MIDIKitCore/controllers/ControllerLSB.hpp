#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "MIDIKitCore/numbers/UInt.hpp"

namespace midikit::core {

/// The least significant half of a controller, a controller itself: its number is that of the other half
/// plus 32. A sum type over the numbers 32 to 63, held as the number.
class ControllerLSB {
 public:
  enum Plain : std::uint8_t {
    bankSelect = 32,
    modWheel = 33,
    breath = 34,
    footController = 36,
    portamentoTime = 37,
    dataEntry = 38,
    channelVolume = 39,
    balance = 40,
    pan = 42,
    expression = 43,
    effectControl1 = 44,
    effectControl2 = 45,
    generalPurpose1 = 48,
    generalPurpose2 = 49,
    generalPurpose3 = 50,
    generalPurpose4 = 51,
  };

  /// Halves of controllers without a meaning, which give the names.
  enum class Undefined : std::uint8_t {
    cc3 = 35,
    cc9 = 41,
    cc14 = 46,
    cc15 = 47,
    cc20 = 52,
    cc21 = 53,
    cc22 = 54,
    cc23 = 55,
    cc24 = 56,
    cc25 = 57,
    cc26 = 58,
    cc27 = 59,
    cc28 = 60,
    cc29 = 61,
    cc30 = 62,
    cc31 = 63,
  };

  constexpr ControllerLSB(Plain plain) : number_(static_cast<std::uint8_t>(plain)) {}

  static constexpr ControllerLSB undefined(Undefined undefined) {
    return ControllerLSB(static_cast<std::uint8_t>(undefined));
  }

  /// None outside 32 to 63.
  static constexpr std::optional<ControllerLSB> fromNumber(UInt7 number) {
    return number.value() / 32 == 1 ? std::optional(ControllerLSB(number.value())) : std::nullopt;
  }

  constexpr UInt7 number() const { return UInt7::unchecked(number_); }

  /// The case, if it's a plain one.
  constexpr std::optional<Plain> plain() const {
    return isUndefined() ? std::nullopt : std::optional(static_cast<Plain>(number_));
  }

  /// The payload of the case `undefined`.
  constexpr std::optional<Undefined> undefined() const {
    return isUndefined() ? std::optional(static_cast<Undefined>(number_)) : std::nullopt;
  }

  /// As in "Mod Wheel LSB" and "Undefined CC3 LSB".
  std::string description() const;

  friend constexpr bool operator==(ControllerLSB, ControllerLSB) = default;

 private:
  constexpr explicit ControllerLSB(std::uint8_t number) : number_(number) {}
  constexpr bool isUndefined() const { return (undefinedNumbers >> (number_ - 32) & 1) != 0; }

  // Bit 0 stands for number 32.
  static constexpr std::uint32_t undefinedNumbers = 0xFFF0C208;

  std::uint8_t number_;
};

}  // namespace midikit::core
