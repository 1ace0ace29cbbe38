#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <type_traits>

#include "MIDIKitCore/ValueScaling.hpp"
#include "MIDIKitCore/numbers/UInt.hpp"

namespace midikit::core {

/// The form in which a channel voice value was given and is held. Not every value has each of them.
enum class ChanVoiceValueForm : std::uint8_t { unitInterval, bipolarUnitInterval, midi1, midi2 };

/// What every channel voice value is in memory: its form, and the bits of the number or the integer and 0.
/// The bits stand as two halves, so that an event needs no gaps for an alignment of 8.
struct ChanVoiceBits {
  std::array<std::uint32_t, 2> bits;
  ChanVoiceValueForm form;
};

/// Stands in for the width of a form that a value doesn't have.
struct NoMIDI1Form {};

/// A value of a channel voice message that was given as a number from 0.0 to 1.0, as a MIDI 1.0 integer
/// (`MIDI1`) or as a MIDI 2.0 one (`MIDI2`), and keeps that form until another is asked for. A plain value of
/// 12 bytes.
///
/// Equality compares across forms, as a listener would: a floating form against an integer in the integer's
/// form, two other forms in the right-hand one. So it isn't symmetric where the right-hand form is the wider
/// one: 7 bits against 16 can differ while 16 against 7 are equal. Hashing is on the form and what is held in
/// it.
template <class MIDI1, class MIDI2, bool isBipolar>
class ChanVoiceValue {
 public:
  using Form = ChanVoiceValueForm;

  static constexpr bool hasMIDI1Form = !std::is_same_v<MIDI1, NoMIDI1Form>;
  static constexpr bool hasBipolarForm = isBipolar;

  /// The centre of a bipolar value is 0.5. An infinite number is held as its nearest bound, not-a-number as
  /// 0.0.
  static constexpr ChanVoiceValue unitInterval(double value) {
    return ChanVoiceValue(Form::unitInterval, isFinite(value) ? value : clampedToUnitInterval(value));
  }

  /// From -1.0 to 1.0, the centre is 0.0. An infinite number is held as its nearest bound, not-a-number as
  /// 0.0.
  static constexpr ChanVoiceValue bipolarUnitInterval(double value)
    requires isBipolar
  {
    return ChanVoiceValue(Form::bipolarUnitInterval,
                          isFinite(value) ? value : clampedToBipolarInterval(value));
  }

  static constexpr ChanVoiceValue midi1(MIDI1 value)
    requires hasMIDI1Form
  {
    return ChanVoiceValue(Form::midi1, std::uint32_t{value.value()});
  }

  static constexpr ChanVoiceValue midi2(MIDI2 value) {
    return ChanVoiceValue(Form::midi2, std::uint32_t{value});
  }

  constexpr Form form() const { return stored_.form; }

  /// 0.0 to 1.0.
  constexpr double unitIntervalValue() const {
    switch (stored_.form) {
      case Form::unitInterval:
        return clampedToUnitInterval(number());
      case Form::bipolarUnitInterval:
        return clampedToBipolarInterval(number()) * 0.5 + 0.5;
      case Form::midi1:
        return unitIntervalFromInteger<midi1Width>(integer());
      case Form::midi2:
        break;
    }
    return unitIntervalFromInteger<midi2Width>(integer());
  }

  /// -1.0 to 1.0.
  constexpr double bipolarUnitIntervalValue() const
    requires isBipolar
  {
    switch (stored_.form) {
      case Form::unitInterval:
        return (clampedToUnitInterval(number()) - 0.5) * 2.0;
      case Form::bipolarUnitInterval:
        return clampedToBipolarInterval(number());
      case Form::midi1:
        return bipolarIntervalFromInteger<midi1Width>(integer());
      case Form::midi2:
        break;
    }
    return bipolarIntervalFromInteger<midi2Width>(integer());
  }

  /// The MIDI 1.0 form. The low bits of a MIDI 2.0 value are dropped.
  constexpr MIDI1 midi1Value() const
    requires hasMIDI1Form
  {
    return MIDI1::unchecked(static_cast<typename MIDI1::storage_type>(midi1Integer()));
  }

  /// The MIDI 2.0 form. A MIDI 1.0 value is scaled up, so that its centre and maximum stay centre and
  /// maximum.
  constexpr MIDI2 midi2Value() const {
    switch (stored_.form) {
      case Form::midi2:
        break;
      case Form::midi1:
        return static_cast<MIDI2>(scaledUp<midi1Width, midi2Width>(integer()));
      case Form::unitInterval:
        return static_cast<MIDI2>(integerFromUnitInterval<midi2Width>(number()));
      case Form::bipolarUnitInterval:
        return static_cast<MIDI2>(integerFromBipolarInterval<midi2Width>(number()));
    }
    return static_cast<MIDI2>(integer());
  }

  /// The same value with a number in its interval: what an event holds.
  constexpr ChanVoiceValue clamped() const {
    switch (stored_.form) {
      case Form::unitInterval:
        return ChanVoiceValue(stored_.form, clampedToUnitInterval(number()));
      case Form::bipolarUnitInterval:
        return ChanVoiceValue(stored_.form, clampedToBipolarInterval(number()));
      case Form::midi1:
      case Form::midi2:
        break;
    }
    return *this;
  }

  /// As in "midi1(64)", "midi2(32768)", "unitInterval(0.5)" and "bipolarUnitInterval(-0.25)".
  std::string description() const;

  friend constexpr bool operator==(const ChanVoiceValue& a, const ChanVoiceValue& b) { return a.equals(b); }

  /// Of the form and of what is held in it.
  constexpr std::size_t hash() const {
    // 0.0 and -0.0 are equal.
    const std::uint64_t held = isNumber() && number() == 0.0 ? 0 : std::bit_cast<std::uint64_t>(stored_.bits);
    return static_cast<std::size_t>((held * 4 + static_cast<std::uint64_t>(stored_.form)) *
                                    0x9E3779B97F4A7C15U);
  }

  /// The field of an event: a value whose number is always in its interval, since writing clamps it.
  class Validated {
   public:
    constexpr Validated(const ChanVoiceValue& value) : value_(value.clamped()) {}

    constexpr const ChanVoiceValue& value() const { return value_; }
    constexpr operator const ChanVoiceValue&() const { return value_; }

    friend constexpr bool operator==(const Validated&, const Validated&) = default;

   private:
    ChanVoiceValue value_;
  };

 private:
  static constexpr unsigned midi2Width = std::numeric_limits<MIDI2>::digits;
  static constexpr unsigned midi1Width = [] {
    if constexpr (hasMIDI1Form) {
      return static_cast<unsigned>(MIDI1::bitWidth);
    } else {
      return midi2Width;
    }
  }();

  static constexpr bool isFinite(double value) { return value - value == 0.0; }

  constexpr ChanVoiceValue(Form form, std::uint32_t integer) : stored_{{integer, 0}, form} {}
  constexpr ChanVoiceValue(Form form, double number)
      : stored_{std::bit_cast<std::array<std::uint32_t, 2>>(number), form} {}

  constexpr bool isNumber() const { return stored_.form < Form::midi1; }
  constexpr double number() const { return std::bit_cast<double>(stored_.bits); }
  constexpr std::uint32_t integer() const { return stored_.bits[0]; }

  constexpr std::uint32_t midi1Integer() const {
    switch (stored_.form) {
      case Form::midi1:
        break;
      case Form::midi2:
        return scaledDown<midi2Width, midi1Width>(integer());
      case Form::unitInterval:
        return integerFromUnitInterval<midi1Width>(number());
      case Form::bipolarUnitInterval:
        return integerFromBipolarInterval<midi1Width>(number());
    }
    return integer();
  }

  constexpr bool equals(const ChanVoiceValue& other) const {
    if (stored_.form == other.stored_.form) {
      return isNumber() ? number() == other.number() : integer() == other.integer();
    }
    switch (other.isNumber() && !isNumber() ? stored_.form : other.stored_.form) {
      case Form::unitInterval:
        return unitIntervalValue() == other.unitIntervalValue();
      case Form::bipolarUnitInterval:
        if constexpr (isBipolar) {
          return bipolarUnitIntervalValue() == other.bipolarUnitIntervalValue();
        }
        break;
      case Form::midi1:
        return midi1Integer() == other.midi1Integer();
      case Form::midi2:
        break;
    }
    return midi2Value() == other.midi2Value();
  }

  ChanVoiceBits stored_;
};

/// Velocity: 7 bits in MIDI 1.0, 16 in MIDI 2.0.
using ChanVoice7Bit16BitValue = ChanVoiceValue<UInt7, std::uint16_t, false>;
/// Controller values and pressure: 7 bits in MIDI 1.0, 32 in MIDI 2.0.
using ChanVoice7Bit32BitValue = ChanVoiceValue<UInt7, std::uint32_t, false>;
/// Pitch bend: 14 bits in MIDI 1.0, 32 in MIDI 2.0, with a bipolar form.
using ChanVoice14Bit32BitValue = ChanVoiceValue<UInt14, std::uint32_t, true>;
/// Per-note controllers and per-note pitch bend, which MIDI 1.0 doesn't have.
using ChanVoice32BitValue = ChanVoiceValue<NoMIDI1Form, std::uint32_t, false>;

}  // namespace midikit::core

template <class MIDI1, class MIDI2, bool isBipolar>
struct std::hash<midikit::core::ChanVoiceValue<MIDI1, MIDI2, isBipolar>> {
  constexpr std::size_t operator()(
      const midikit::core::ChanVoiceValue<MIDI1, MIDI2, isBipolar>& value) const noexcept {
    return value.hash();
  }
};
