#pragma once

#include <concepts>
#include <tuple>

#include "MIDIKitCore/controllers/AssignableController.hpp"
#include "MIDIKitCore/controllers/Controller.hpp"
#include "MIDIKitCore/controllers/RegisteredController.hpp"
#include "MIDIKitCore/numbers/UInt.hpp"

namespace midikit::core {

/// A registered parameter number: one packet in MIDI 2.0, a run of control changes in MIDI 1.0.
struct RPN {
  constexpr RPN(RegisteredController parameter_, MIDI2ParameterNumberChange change_, UInt4 channel_,
                UInt4 group_ = {})
      : parameter(parameter_), change(change_), channel(channel_), group(group_) {}
  /// An absolute change.
  constexpr RPN(RegisteredController parameter_, UInt4 channel_, UInt4 group_ = {})
      : RPN(parameter_, MIDI2ParameterNumberChange::absolute, channel_, group_) {}

  /// The controllers that carry the halves of the parameter number in MIDI 1.0.
  static constexpr Controller parameterMSBController = Controller::rpnMSB;
  static constexpr Controller parameterLSBController = Controller::rpnLSB;

  friend constexpr bool operator==(const RPN&, const RPN&) = default;
  constexpr auto fields() const { return std::tie(parameter, change, channel, group); }

  RegisteredController parameter;
  MIDI2ParameterNumberChange change;
  UInt4 channel;
  UInt4 group;
};

/// An assignable (non-registered) parameter number: one packet in MIDI 2.0, a run of control changes in
/// MIDI 1.0.
struct NRPN {
  constexpr NRPN(AssignableController parameter_, MIDI2ParameterNumberChange change_, UInt4 channel_,
                 UInt4 group_ = {})
      : parameter(parameter_), change(change_), channel(channel_), group(group_) {}
  /// An absolute change.
  constexpr NRPN(AssignableController parameter_, UInt4 channel_, UInt4 group_ = {})
      : NRPN(parameter_, MIDI2ParameterNumberChange::absolute, channel_, group_) {}

  /// The controllers that carry the halves of the parameter number in MIDI 1.0.
  static constexpr Controller parameterMSBController = Controller::nrpnMSB;
  static constexpr Controller parameterLSBController = Controller::nrpnLSB;

  friend constexpr bool operator==(const NRPN&, const NRPN&) = default;
  constexpr auto fields() const { return std::tie(parameter, change, channel, group); }

  AssignableController parameter;
  MIDI2ParameterNumberChange change;
  UInt4 channel;
  UInt4 group;
};

/// What `RPN` and `NRPN` have in common.
template <class T>
concept MIDIParameterNumberEvent = requires(const T& event) {
  requires MIDIParameterNumber<decltype(T::parameter)>;
  { event.change } -> std::convertible_to<MIDI2ParameterNumberChange>;
  { event.channel } -> std::convertible_to<UInt4>;
  { event.group } -> std::convertible_to<UInt4>;
  { T::parameterMSBController } -> std::convertible_to<Controller>;
  { T::parameterLSBController } -> std::convertible_to<Controller>;
};

static_assert(MIDIParameterNumberEvent<RPN> && MIDIParameterNumberEvent<NRPN>);

}  // namespace midikit::core
