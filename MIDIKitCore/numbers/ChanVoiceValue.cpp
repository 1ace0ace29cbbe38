#include "MIDIKitCore/numbers/ChanVoiceValue.hpp"

#include <charconv>

namespace midikit::core {
namespace {

/// The shortest digits that read back as the same number.
std::string digitsOf(double number) {
  std::array<char, 32> digits{};
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  return {digits.data(), end};
}

}  // namespace

template <class MIDI1, class MIDI2, bool isBipolar>
std::string ChanVoiceValue<MIDI1, MIDI2, isBipolar>::description() const {
  switch (form()) {
    case Form::unitInterval:
      return "unitInterval(" + digitsOf(number()) + ")";
    case Form::bipolarUnitInterval:
      return "bipolarUnitInterval(" + digitsOf(number()) + ")";
    case Form::midi1:
      return "midi1(" + std::to_string(integer()) + ")";
    case Form::midi2:
      break;
  }
  return "midi2(" + std::to_string(integer()) + ")";
}

template std::string ChanVoiceValue<UInt7, std::uint16_t, false>::description() const;
template std::string ChanVoiceValue<UInt7, std::uint32_t, false>::description() const;
template std::string ChanVoiceValue<UInt14, std::uint32_t, true>::description() const;
template std::string ChanVoiceValue<NoMIDI1Form, std::uint32_t, false>::description() const;

}  // namespace midikit::core
