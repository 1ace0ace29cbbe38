#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "MIDIKitCore/controllers/ControllerLSB.hpp"
#include "MIDIKitCore/numbers/UInt.hpp"

namespace midikit::core {

/// Which controller a control change message moves. A sum type over all the controller numbers 0 to 127, held
/// as the number: `Plain` has a name of its own, `LSB` is the least significant half of another controller,
/// `Undefined` has no meaning in the MIDI 1.0 specification, `Mode` is a channel mode message. Write
/// `Controller::modWheel`, `Controller::lsb(Controller::LSB::modWheel)`,
/// `Controller::mode(Controller::Mode::allNotesOff)`.
class Controller {
 public:
  enum Plain : std::uint8_t {
    bankSelect = 0,
    modWheel = 1,
    breath = 2,
    footController = 4,
    portamentoTime = 5,
    dataEntry = 6,
    volume = 7,
    balance = 8,
    pan = 10,
    expression = 11,
    effectControl1 = 12,
    effectControl2 = 13,
    generalPurpose1 = 16,
    generalPurpose2 = 17,
    generalPurpose3 = 18,
    generalPurpose4 = 19,
    sustainPedal = 64,
    portamento = 65,
    sostenutoPedal = 66,
    softPedal = 67,
    legatoFootswitch = 68,
    hold2 = 69,
    soundCtrl1_soundVariation = 70,
    soundCtrl2_timbreIntensity = 71,
    soundCtrl3_releaseTime = 72,
    soundCtrl4_attackTime = 73,
    soundCtrl5_brightness = 74,
    soundCtrl6_decayTime = 75,
    soundCtrl7_vibratoRate = 76,
    soundCtrl8_vibratoDepth = 77,
    soundCtrl9_vibratoDelay = 78,
    soundCtrl10_defaultUndefined = 79,
    generalPurpose5 = 80,
    generalPurpose6 = 81,
    generalPurpose7 = 82,
    generalPurpose8 = 83,
    portamentoControl = 84,
    highResolutionVelocityPrefix = 88,
    effects1Depth_reverbSendLevel = 91,
    effects2Depth = 92,
    effects3Depth_chorusSendLevel = 93,
    effects4Depth = 94,
    effects5Depth = 95,
    dataIncrement = 96,
    dataDecrement = 97,
    nrpnLSB = 98,
    nrpnMSB = 99,
    rpnLSB = 100,
    rpnMSB = 101,
  };

  /// Numbers without a meaning.
  enum class Undefined : std::uint8_t {
    cc3 = 3,
    cc9 = 9,
    cc14 = 14,
    cc15 = 15,
    cc20 = 20,
    cc21 = 21,
    cc22 = 22,
    cc23 = 23,
    cc24 = 24,
    cc25 = 25,
    cc26 = 26,
    cc27 = 27,
    cc28 = 28,
    cc29 = 29,
    cc30 = 30,
    cc31 = 31,
    cc85 = 85,
    cc86 = 86,
    cc87 = 87,
    cc89 = 89,
    cc90 = 90,
    cc102 = 102,
    cc103 = 103,
    cc104 = 104,
    cc105 = 105,
    cc106 = 106,
    cc107 = 107,
    cc108 = 108,
    cc109 = 109,
    cc110 = 110,
    cc111 = 111,
    cc112 = 112,
    cc113 = 113,
    cc114 = 114,
    cc115 = 115,
    cc116 = 116,
    cc117 = 117,
    cc118 = 118,
    cc119 = 119,
  };

  /// Channel mode messages.
  enum class Mode : std::uint8_t {
    allSoundOff = 120,
    resetAllControllers = 121,
    localControl = 122,
    allNotesOff = 123,
    omniModeOff = 124,
    omniModeOn = 125,
    monoModeOn = 126,
    polyModeOn = 127,
  };

  using LSB = ControllerLSB;

  constexpr Controller(Plain plain) : number_(static_cast<std::uint8_t>(plain)) {}
  /// Total: each number has its case.
  constexpr explicit Controller(UInt7 number) : number_(number.value()) {}

  static constexpr Controller lsb(LSB lsb) { return Controller(lsb.number()); }
  static constexpr Controller undefined(Undefined undefined) {
    return Controller(UInt7::unchecked(static_cast<std::uint8_t>(undefined)));
  }
  static constexpr Controller mode(Mode mode) {
    return Controller(UInt7::unchecked(static_cast<std::uint8_t>(mode)));
  }

  constexpr UInt7 number() const { return UInt7::unchecked(number_); }

  /// Calls `handler` with the `Plain`, `LSB`, `Undefined` or `Mode` that the number stands for. All four must
  /// be handled, with the same type of result.
  template <class Handler>
  constexpr decltype(auto) visit(Handler&& handler) const {
    if (number_ >= 120) {
      return std::forward<Handler>(handler)(static_cast<Mode>(number_));
    }
    if (const auto lsb = LSB::fromNumber(number())) {
      return std::forward<Handler>(handler)(*lsb);
    }
    if (isUndefined()) {
      return std::forward<Handler>(handler)(static_cast<Undefined>(number_));
    }
    return std::forward<Handler>(handler)(static_cast<Plain>(number_));
  }

  /// The case, if it's a plain one.
  constexpr std::optional<Plain> plain() const { return as<Plain>(); }
  /// The payload of the case of that name.
  constexpr std::optional<LSB> lsb() const { return as<LSB>(); }
  constexpr std::optional<Undefined> undefined() const { return as<Undefined>(); }
  constexpr std::optional<Mode> mode() const { return as<Mode>(); }

  /// As in "Mod Wheel", "Mod Wheel LSB", "Undefined CC3" and "All Notes Off".
  std::string description() const;

  friend constexpr bool operator==(Controller, Controller) = default;

 private:
  template <class Case>
  constexpr std::optional<Case> as() const;

  constexpr bool isUndefined() const {
    return number_ < 32 ? (undefinedNumbers0 >> number_ & 1) != 0
                        : number_ >= 85 && (undefinedNumbers85 >> (number_ - 85) & 1) != 0;
  }

  // Bit 0 stands for number 0, and for number 85.
  static constexpr std::uint32_t undefinedNumbers0 = 0xFFF0C208;
  static constexpr std::uint64_t undefinedNumbers85 = 0x7FFFE0037;

  std::uint8_t number_;
};

template <class Case>
constexpr std::optional<Case> Controller::as() const {
  return visit([]<class Found>(Found found) -> std::optional<Case> {
    if constexpr (std::is_same_v<Found, Case>) {
      return found;
    } else {
      return std::nullopt;
    }
  });
}

}  // namespace midikit::core

template <>
struct std::hash<midikit::core::Controller> {
  constexpr std::size_t operator()(midikit::core::Controller controller) const noexcept {
    return controller.number().value();
  }
};
