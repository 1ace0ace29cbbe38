#pragma once

#include <cstdint>
#include <string_view>

namespace midikit::core {

/// The naming convention under which a note number is read: which octave note 0 begins. It goes by the maker
/// of the instrument, and note 60, the middle C, has another octave in each.
enum class MIDINoteStyle : std::uint8_t {
  yamaha,    ///< note 60 is "C3"; the default
  roland,    ///< note 60 is "C4"
  cakewalk,  ///< note 60 is "C5"
};

/// The octave of note 0: -2, -1 or 0.
constexpr int firstOctave(MIDINoteStyle style) {
  return static_cast<int>(style) - 2;
}

/// "Yamaha (Middle C == C3)"
constexpr std::string_view description(MIDINoteStyle style) {
  switch (style) {
    case MIDINoteStyle::yamaha:
      return "Yamaha (Middle C == C3)";
    case MIDINoteStyle::roland:
      return "Roland (Middle C == C4)";
    case MIDINoteStyle::cakewalk:
      return "Cakewalk (Middle C == C5)";
  }
  return {};
}

}  // namespace midikit::core
