#include "MIDIKitCore/SysExParser.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace midikit::core {
namespace {

constexpr std::uint8_t sysExStart = 0xF0;
constexpr std::uint8_t sysExEnd = 0xF7;

/// Device ID and the two sub-IDs of a universal message.
using UniversalHeader = std::array<UInt7, 3>;

std::optional<UniversalHeader> universalHeader(std::span<const std::uint8_t> bytes) {
  UniversalHeader header;
  if (bytes.size() < header.size()) {
    return std::nullopt;
  }
  for (std::size_t i = 0; i < header.size(); ++i) {
    const auto byte = UInt7::exactly(bytes[i]);
    if (!byte) {
      return std::nullopt;
    }
    header[i] = *byte;
  }
  return header;
}

SysExResult universal7(UniversalSysExType type, std::span<const std::uint8_t> bytes, UInt4 group) {
  const auto header = universalHeader(bytes);
  if (!header) {
    return ParseError::malformed;
  }
  auto data = SysEx7Data::exactly(bytes.subspan(header->size()));
  if (!data) {
    return ParseError::malformed;
  }
  const auto [deviceID, subID1, subID2] = *header;
  return MIDIEvent(UniversalSysEx7(type, deviceID, subID1, subID2, *std::move(data), group));
}

SysExResult universal8(UniversalSysExType type, std::span<const std::uint8_t> bytes, std::uint8_t streamID,
                       UInt4 group) {
  const auto header = universalHeader(bytes);
  if (!header) {
    return ParseError::malformed;
  }
  const auto [deviceID, subID1, subID2] = *header;
  return MIDIEvent(UniversalSysEx8(type, deviceID, subID1, subID2, SysExData(bytes.subspan(header->size())),
                                   streamID, group));
}

/// The white space of Unicode beyond ASCII, in UTF-8: text that was copied from a document is full of it.
constexpr std::string_view wideWhiteSpace[] = {
    "\u0085", "\u00A0", "\u1680", "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006",
    "\u2007", "\u2008", "\u2009", "\u200A", "\u2028", "\u2029", "\u202F", "\u205F", "\u3000"};

/// How many bytes of white space `text`, which isn't empty, begins with: none, or those of one character.
std::size_t leadingWhiteSpace(std::string_view text) {
  if (static_cast<unsigned char>(text[0]) < 0x80) {
    return text[0] == ' ' || (text[0] >= '\t' && text[0] <= '\r') ? 1 : 0;
  }
  const auto* const found = std::ranges::find_if(
      wideWhiteSpace, [text](std::string_view space) { return text.starts_with(space); });
  return found != std::ranges::end(wideWhiteSpace) ? found->size() : 0;
}

std::string withoutWhiteSpace(std::string_view text) {
  std::string rest;
  rest.reserve(text.size());
  while (!text.empty()) {
    if (const auto space = leadingWhiteSpace(text); space != 0) {
      text.remove_prefix(space);
    } else {
      rest += text[0];
      text.remove_prefix(1);
    }
  }
  return rest;
}

}  // namespace

SysExResult parseSysEx7Body(std::span<const std::uint8_t> body, UInt4 group) {
  if (body.empty()) {
    return ParseError::malformed;
  }
  if (const auto type = universalSysExType(body[0])) {
    return universal7(*type, body.subspan(1), group);
  }
  const auto idSize = std::min<std::size_t>(body[0] == 0 ? 3 : 1, body.size());
  const auto manufacturer = SysExManufacturer::fromBytes7(body.first(idSize));
  if (!manufacturer) {
    return ParseError::malformed;
  }
  auto data = SysEx7Data::exactly(body.subspan(idSize));
  if (!data) {
    return ParseError::malformed;
  }
  return MIDIEvent(SysEx7(*manufacturer, *std::move(data), group));
}

SysExResult parseSysEx7(std::span<const std::uint8_t> rawBytes, UInt4 group) {
  if (rawBytes.empty()) {
    return ParseError::rawBytesEmpty;
  }
  if (rawBytes[0] != sysExStart) {
    return ParseError::malformed;
  }
  const auto body = rawBytes.subspan(1);
  if (!body.empty() && body.back() == sysExEnd) {
    return parseSysEx7Body(body.first(body.size() - 1), group);
  }
  // A universal message that ends with its header is one only if its end is there to be seen.
  constexpr std::size_t universalHeaderSize = 4;
  if (body.size() == universalHeaderSize && universalSysExType(body[0])) {
    return ParseError::malformed;
  }
  return parseSysEx7Body(body, group);
}

SysExResult parseSysEx7Hex(std::string_view text, UInt4 group) {
  const auto digits = withoutWhiteSpace(text);
  if (digits.empty() || digits.size() % 2 != 0) {
    return ParseError::malformed;
  }
  std::vector<std::uint8_t> bytes(digits.size() / 2);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const char* const pair = digits.data() + 2 * i;
    const auto [end, error] = std::from_chars(pair, pair + 2, bytes[i], 16);
    if (error != std::errc() || end != pair + 2) {
      return ParseError::malformed;
    }
  }
  return parseSysEx7(bytes, group);
}

SysExResult parseSysEx8(std::span<const std::uint8_t> body, UInt4 group) {
  if (body.empty()) {
    return ParseError::rawBytesEmpty;
  }
  constexpr std::size_t shortest = 3;
  if (body.size() < shortest) {
    return ParseError::malformed;
  }
  const auto streamID = body[0];
  const auto behindID = body.subspan(shortest);
  const auto type = body[1] == 0 ? universalSysExType(body[2]) : std::nullopt;
  if (type) {
    return universal8(*type, behindID, streamID, group);
  }
  const auto manufacturer = SysExManufacturer::fromBytes8(body[1], body[2]);
  if (!manufacturer) {
    return ParseError::malformed;
  }
  return MIDIEvent(SysEx8(*manufacturer, SysExData(behindID), streamID, group));
}

}  // namespace midikit::core
