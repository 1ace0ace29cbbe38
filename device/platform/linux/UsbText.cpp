#include "device/platform/linux/UsbText.hpp"

#include "foundation/text/Utf8.hpp"

namespace karvex::device {

std::optional<std::string> serialNumberFromUsb(std::string_view raw) {
  std::size_t units = 0;
  for (auto rest = raw; !rest.empty();) {
    const auto character = foundation::firstCharacter(rest);
    units += character ? character->utf16Units() : 1;
    if (!character || character->isControl() || units > longestUsbString) {
      return std::nullopt;
    }
    rest.remove_prefix(character->bytes.size());
  }
  return std::string(raw);
}

std::string productNameFromUsb(std::string_view raw) {
  std::string name;
  for (std::size_t units = 0; !raw.empty();) {
    const auto character = foundation::firstCharacter(raw);
    units += character ? character->utf16Units() : 1;
    if (units > longestUsbString) {
      break;
    }
    name += character && !character->isControl() ? character->bytes : foundation::replacementCharacter;
    raw.remove_prefix(character ? character->bytes.size() : 1);
  }
  return name;
}

}  // namespace karvex::device
