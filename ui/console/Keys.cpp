#include "ui/console/Keys.hpp"

#include <cstddef>
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

/// The length of the sequence that the bytes begin with, as a key sends it (ECMA-48 CSI, or SS3 of the
/// keypad's application mode). 0 if they begin with none, or don't hold it whole.
std::size_t sequenceLength(std::string_view bytes) {
  if (bytes.size() < 3 || bytes[0] != '\x1b' || (bytes[1] != '[' && bytes[1] != 'O')) {
    return 0;
  }
  std::size_t end = 2;
  while (bytes[1] == '[' && end < bytes.size() && bytes[end] >= 0x20 && bytes[end] < 0x40) {
    ++end;
  }
  return end < bytes.size() ? end + 1 : 0;
}

}  // namespace

std::vector<Key> keysIn(std::string_view bytes) {
  std::vector<Key> keys;
  while (!bytes.empty()) {
    const auto sequence = sequenceLength(bytes);
    if (sequence == 3 && (bytes[2] == 'A' || bytes[2] == 'B')) {
      keys.push_back(bytes[2] == 'A' ? Key::up : Key::down);
    } else if (const auto key = sequence == 0 ? keyOf(bytes.front()) : std::nullopt) {
      keys.push_back(*key);
    }
    bytes.remove_prefix(sequence == 0 ? 1 : sequence);
  }
  return keys;
}

}  // namespace karvex::ui::console
