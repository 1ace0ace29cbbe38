#include "ui/console/Keys.hpp"

#include <optional>

namespace karvex::ui::console {
namespace {

std::optional<Key> keyOf(char byte) {
  switch (byte) {
    case 'k':
      return Key::up;
    case 'j':
      return Key::down;
    case '\r':
    case '\n':
      return Key::enter;
    case '\x1b':
      return Key::escape;
    case 'u':
      return Key::upload;
    case 'r':
      return Key::refresh;
    case 's':
      return Key::sync;
    case 'x':
      return Key::close;
    case 'q':
    case '\x03':  // Ctrl-C
    case '\x04':
      return Key::quit;  // Ctrl-D
    default:
      return std::nullopt;
  }
}

}  // namespace

std::vector<Key> keysIn(std::string_view bytes) {
  std::vector<Key> keys;
  while (!bytes.empty()) {
    // The arrow keys in their two forms (ECMA-48 CUU and CUD, and SS3 of the keypad's application mode).
    const bool isArrow = bytes.size() >= 3 && bytes[0] == '\x1b' && (bytes[1] == '[' || bytes[1] == 'O') &&
                         (bytes[2] == 'A' || bytes[2] == 'B');
    if (isArrow) {
      keys.push_back(bytes[2] == 'A' ? Key::up : Key::down);
    } else if (const auto key = keyOf(bytes.front())) {
      keys.push_back(*key);
    }
    bytes.remove_prefix(isArrow ? 3 : 1);
  }
  return keys;
}

}  // namespace karvex::ui::console
