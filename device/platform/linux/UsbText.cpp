#include "device/platform/linux/UsbText.hpp"

#include <algorithm>
#include <array>

namespace karvex::device {
namespace {

constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";  // U+FFFD

/// What the first bytes of a text are.
struct Piece {
  std::size_t bytes = 1;       ///< how many of them belong together
  std::size_t utf16Units = 1;  ///< how many code units the character takes in a string descriptor
  bool clean = false;          ///< a well-formed character, and not a control character
};

/// One row of the well-formed byte sequences: lead bytes in [firstLead, lastLead] go with `bytes` bytes in
/// all, and mean at least `lowest`; a lower value would be a longer form than needed.
struct Form {
  unsigned char firstLead;
  unsigned char lastLead;
  unsigned char payloadMask;
  std::size_t bytes;
  char32_t lowest;
};

constexpr std::array<Form, 4> forms = {{
    {.firstLead = 0x00, .lastLead = 0x7F, .payloadMask = 0x7F, .bytes = 1, .lowest = 0},
    {.firstLead = 0xC0, .lastLead = 0xDF, .payloadMask = 0x1F, .bytes = 2, .lowest = 0x80},
    {.firstLead = 0xE0, .lastLead = 0xEF, .payloadMask = 0x0F, .bytes = 3, .lowest = 0x800},
    {.firstLead = 0xF0, .lastLead = 0xF7, .payloadMask = 0x07, .bytes = 4, .lowest = 0x10000},
}};

bool isCharacter(char32_t value) {
  return value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
}

bool isControl(char32_t value) {
  return value < 0x20 || (value >= 0x7F && value <= 0x9F);
}

/// Looks at the front of a text that isn't empty.
Piece firstPiece(std::string_view text) {
  const auto byteAt = [text](std::size_t index) { return static_cast<unsigned char>(text[index]); };
  const auto lead = byteAt(0);
  const auto* form = std::find_if(forms.begin(), forms.end(), [lead](const Form& candidate) {
    return lead >= candidate.firstLead && lead <= candidate.lastLead;
  });
  if (form == forms.end() || form->bytes > text.size()) {
    return {};
  }
  char32_t value = lead & form->payloadMask;
  for (std::size_t index = 1; index < form->bytes; ++index) {
    if ((byteAt(index) & 0xC0) != 0x80) {
      return {};
    }
    value = (value << 6) | (byteAt(index) & 0x3F);
  }
  if (value < form->lowest || !isCharacter(value)) {
    return {};
  }
  return {.bytes = form->bytes, .utf16Units = value > 0xFFFF ? 2U : 1U, .clean = !isControl(value)};
}

}  // namespace

std::optional<std::string> serialNumberFromUsb(std::string_view raw) {
  std::size_t units = 0;
  for (std::string_view rest = raw; !rest.empty();) {
    const Piece piece = firstPiece(rest);
    units += piece.utf16Units;
    if (!piece.clean || units > longestUsbString) {
      return std::nullopt;
    }
    rest.remove_prefix(piece.bytes);
  }
  return std::string(raw);
}

std::string productNameFromUsb(std::string_view raw) {
  std::string name;
  std::size_t units = 0;
  for (std::string_view rest = raw; !rest.empty();) {
    const Piece piece = firstPiece(rest);
    units += piece.utf16Units;
    if (units > longestUsbString) {
      break;
    }
    name += piece.clean ? rest.substr(0, piece.bytes) : replacementCharacter;
    rest.remove_prefix(piece.bytes);
  }
  return name;
}

}  // namespace karvex::device
