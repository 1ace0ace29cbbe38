#include "MIDIKitCore/SysExParser.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "MIDIKitCore/wire/MIDI1Status.hpp"

namespace midikit::core {
namespace {

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

using Bytes = std::span<const std::uint8_t>;

// Whoever reads a message hands `emit` the type of the record and what its constructor takes, so that the
// event is made in its place. Nothing is handed on if the message is malformed.

template <typename Emit>
void readUniversal7(UniversalSysExType type, Bytes bytes, UInt4 group, const Emit& emit) {
  const auto header = universalHeader(bytes);
  const auto data = header ? SysEx7Bytes::exactly(bytes.subspan(header->size())) : std::nullopt;
  if (data) {
    const auto [deviceID, subID1, subID2] = *header;
    emit(std::in_place_type<UniversalSysEx7>, type, deviceID, subID1, subID2, *data, group);
  }
}

template <typename Emit>
void readUniversal8(UniversalSysExType type, Bytes bytes, std::uint8_t streamID, UInt4 group,
                    const Emit& emit) {
  if (const auto header = universalHeader(bytes)) {
    const auto [deviceID, subID1, subID2] = *header;
    emit(std::in_place_type<UniversalSysEx8>, type, deviceID, subID1, subID2, bytes.subspan(header->size()),
         streamID, group);
  }
}

template <typename Emit>
void read7Body(Bytes body, UInt4 group, const Emit& emit) {
  if (body.empty()) {
    return;
  }
  if (const auto type = universalSysExType(body[0])) {
    return readUniversal7(*type, body.subspan(1), group, emit);
  }
  const auto idSize = std::min<std::size_t>(body[0] == 0 ? 3 : 1, body.size());
  const auto manufacturer = SysExManufacturer::fromBytes7(body.first(idSize));
  const auto data = manufacturer ? SysEx7Bytes::exactly(body.subspan(idSize)) : std::nullopt;
  if (data) {
    emit(std::in_place_type<SysEx7>, *manufacturer, *data, group);
  }
}

template <typename Emit>
void read7(Bytes rawBytes, UInt4 group, const Emit& emit) {
  if (rawBytes.empty() || rawBytes[0] != sysExStatus) {
    return;
  }
  const auto body = rawBytes.subspan(1);
  if (!body.empty() && body.back() == sysExEndStatus) {
    return read7Body(body.first(body.size() - 1), group, emit);
  }
  // A universal message that ends with its header is one only if its end is there to be seen.
  constexpr std::size_t universalHeaderSize = 4;
  if (body.size() != universalHeaderSize || !universalSysExType(body[0])) {
    read7Body(body, group, emit);
  }
}

template <typename Emit>
void read8(Bytes body, UInt4 group, const Emit& emit) {
  constexpr std::size_t shortest = 3;
  if (body.size() < shortest) {
    return;
  }
  const auto streamID = body[0];
  const auto behindID = body.subspan(shortest);
  const auto type = body[1] == 0 ? universalSysExType(body[2]) : std::nullopt;
  if (type) {
    return readUniversal8(*type, behindID, streamID, group, emit);
  }
  if (const auto manufacturer = SysExManufacturer::fromBytes8(body[1], body[2])) {
    emit(std::in_place_type<SysEx8>, *manufacturer, behindID, streamID, group);
  }
}

/// Keeps the event that is read, or why there's none.
template <typename Read>
SysExResult resultOf(Bytes bytes, UInt4 group, Read read) {
  SysExResult result = bytes.empty() ? ParseError::rawBytesEmpty : ParseError::malformed;
  read(bytes, group, [&result](auto type, const auto&... fields) { result = MIDIEvent(type, fields...); });
  return result;
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

SysExResult parseSysEx7(Bytes rawBytes, UInt4 group) {
  return resultOf(rawBytes, group, [](auto... all) { read7(all...); });
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

SysExResult parseSysEx8(Bytes body, UInt4 group) {
  return resultOf(body, group, [](auto... all) { read8(all...); });
}

void appendSysEx7(Bytes rawBytes, UInt4 group, std::vector<MIDIEvent>& into) {
  read7(rawBytes, group, [&into](auto... made) { into.emplace_back(made...); });
}

void appendSysEx7Body(Bytes body, UInt4 group, std::vector<MIDIEvent>& into) {
  read7Body(body, group, [&into](auto... made) { into.emplace_back(made...); });
}

void appendSysEx8(Bytes body, UInt4 group, std::vector<MIDIEvent>& into) {
  read8(body, group, [&into](auto... made) { into.emplace_back(made...); });
}

}  // namespace midikit::core
