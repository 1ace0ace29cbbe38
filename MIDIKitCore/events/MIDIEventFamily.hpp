#pragma once

#include <concepts>
#include <optional>

#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitCore/events/MIDIEventTypeSet.hpp"
#include "MIDIKitCore/events/MIDIEventTypes.hpp"

namespace midikit::core {

// The five families of events. The cases of each stand together in `MIDIEvent::Kind`, in the order of the
// family's type enumeration. Any thread.

namespace detail {

/// The first and last case of the family with the type enumeration `Type`.
template <class Type>
struct MIDIEventFamily;

template <MIDIEvent::Kind First, MIDIEvent::Kind Last>
struct MIDIEventKinds {
  static constexpr MIDIEvent::Kind first = First;
  static constexpr MIDIEvent::Kind last = Last;
};

template <>
struct MIDIEventFamily<ChanVoiceType> : MIDIEventKinds<MIDIEvent::Kind::noteOn, MIDIEvent::Kind::nrpn> {};
template <>
struct MIDIEventFamily<SysExType>
    : MIDIEventKinds<MIDIEvent::Kind::sysEx7, MIDIEvent::Kind::universalSysEx8> {};
template <>
struct MIDIEventFamily<SysCommonType>
    : MIDIEventKinds<MIDIEvent::Kind::timecodeQuarterFrame, MIDIEvent::Kind::tuneRequest> {};
template <>
struct MIDIEventFamily<SysRealTimeType>
    : MIDIEventKinds<MIDIEvent::Kind::timingClock, MIDIEvent::Kind::systemReset> {};
template <>
struct MIDIEventFamily<UtilityType> : MIDIEventKinds<MIDIEvent::Kind::noOp, MIDIEvent::Kind::jrTimestamp> {};

}  // namespace detail

/// A type enumeration of one of the five families.
template <class T>
concept MIDIEventFamilyType = requires {
  { detail::MIDIEventFamily<T>::first } -> std::convertible_to<MIDIEvent::Kind>;
};

/// Whether an event is of the family whose type enumeration is `Type`.
template <MIDIEventFamilyType Type>
constexpr bool isOfFamily(const MIDIEvent& event) {
  using Family = detail::MIDIEventFamily<Type>;
  return event.kind() >= Family::first && event.kind() <= Family::last;
}

/// The event's type if it is of the family, else nothing.
template <MIDIEventFamilyType Type>
constexpr std::optional<Type> typeInFamily(const MIDIEvent& event) {
  const int position =
      static_cast<int>(event.kind()) - static_cast<int>(detail::MIDIEventFamily<Type>::first);
  return isOfFamily<Type>(event) ? std::optional(static_cast<Type>(position)) : std::nullopt;
}

/// Whether an event is of the type; no for one of another family.
template <MIDIEventFamilyType Type>
constexpr bool isOfType(const MIDIEvent& event, Type type) {
  return typeInFamily<Type>(event) == type;
}

/// Whether an event is of one of the types; no for one of another family.
template <MIDIEventFamilyType Type>
constexpr bool isOfTypes(const MIDIEvent& event, MIDIEventTypeSet<Type> types) {
  const auto type = typeInFamily<Type>(event);
  return type && types.contains(*type);
}

constexpr bool isChanVoice(const MIDIEvent& event) {
  return isOfFamily<ChanVoiceType>(event);
}
constexpr bool isChanVoice(const MIDIEvent& event, ChanVoiceType type) {
  return isOfType(event, type);
}
constexpr bool isChanVoice(const MIDIEvent& event, MIDIEventTypeSet<ChanVoiceType> types) {
  return isOfTypes(event, types);
}

constexpr bool isSysEx(const MIDIEvent& event) {
  return isOfFamily<SysExType>(event);
}
constexpr bool isSysEx(const MIDIEvent& event, SysExType type) {
  return isOfType(event, type);
}
constexpr bool isSysEx(const MIDIEvent& event, MIDIEventTypeSet<SysExType> types) {
  return isOfTypes(event, types);
}

constexpr bool isSysCommon(const MIDIEvent& event) {
  return isOfFamily<SysCommonType>(event);
}
constexpr bool isSysCommon(const MIDIEvent& event, SysCommonType type) {
  return isOfType(event, type);
}
constexpr bool isSysCommon(const MIDIEvent& event, MIDIEventTypeSet<SysCommonType> types) {
  return isOfTypes(event, types);
}

constexpr bool isSysRealTime(const MIDIEvent& event) {
  return isOfFamily<SysRealTimeType>(event);
}
constexpr bool isSysRealTime(const MIDIEvent& event, SysRealTimeType type) {
  return isOfType(event, type);
}
constexpr bool isSysRealTime(const MIDIEvent& event, MIDIEventTypeSet<SysRealTimeType> types) {
  return isOfTypes(event, types);
}

constexpr bool isUtility(const MIDIEvent& event) {
  return isOfFamily<UtilityType>(event);
}
constexpr bool isUtility(const MIDIEvent& event, UtilityType type) {
  return isOfType(event, type);
}
constexpr bool isUtility(const MIDIEvent& event, MIDIEventTypeSet<UtilityType> types) {
  return isOfTypes(event, types);
}

}  // namespace midikit::core
