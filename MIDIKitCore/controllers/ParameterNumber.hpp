#pragma once

#include <concepts>
#include <cstdint>
#include <optional>
#include <string_view>

#include "MIDIKitCore/numbers/UInt.hpp"

namespace midikit::core {

/// Registered parameter numbers (RPN) have a meaning in the MIDI specifications, assignable ones (NRPN) are
/// the maker's.
enum class MIDIParameterNumberType : std::uint8_t { registered, assignable };

/// "registered" or "assignable".
constexpr std::string_view description(MIDIParameterNumberType type) {
  return type == MIDIParameterNumberType::registered ? "registered" : "assignable";
}

/// Whether the data entry replaces the parameter's value or is added to it. Only the MIDI 2.0 form tells it.
enum class MIDI2ParameterNumberChange : std::uint8_t { absolute, relative };

/// "absolute" or "relative".
constexpr std::string_view description(MIDI2ParameterNumberChange change) {
  return change == MIDI2ParameterNumberChange::absolute ? "absolute" : "relative";
}

/// A parameter with the data that was entered for it: `RegisteredController` and `AssignableController`.
template <class T>
concept MIDIParameterNumber = requires(const T& parameter) {
  { T::type } -> std::convertible_to<MIDIParameterNumberType>;
  { parameter.parameterNumber() } -> std::same_as<UInt7Pair>;
  { parameter.dataEntryMSB() } -> std::same_as<std::optional<UInt7>>;
  { parameter.dataEntryLSB() } -> std::same_as<std::optional<UInt7>>;
};

}  // namespace midikit::core
