#include "MIDIKitInternals/RadixText.hpp"

#include <algorithm>

namespace midikit::internals {

std::string radixText(std::uint64_t magnitude, bool isNegative, unsigned radix, RadixStyle style) {
  std::string text;
  do {
    text += "0123456789ABCDEF"[magnitude % radix];
    magnitude /= radix;
  } while (magnitude != 0);
  text.resize(std::max(text.size(), style.width), '0');
  if (style.prefix) {
    text += radix == 2 ? "b0" : "x0";
  }
  if (isNegative) {
    text += '-';
  }
  std::ranges::reverse(text);
  return text;
}

}  // namespace midikit::internals
