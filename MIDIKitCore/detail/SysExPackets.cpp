#include "MIDIKitCore/detail/SysExPackets.hpp"

#include <algorithm>
#include <array>
#include <concepts>

#include "MIDIKitCore/sysex/SysExBytes.hpp"
#include "MIDIKitCore/wire/MIDIUMPFields.hpp"
#include "MIDIKitCore/wire/UMPWords.hpp"

namespace midikit::core {
namespace {

using Status = MIDIUMPSysExStatusField;

/// What tells the packets of SysEx7 and SysEx8 apart.
template <bool sends8Bits>
struct Format {
  static constexpr bool is8Bit = sends8Bits;
  static constexpr auto messageType = is8Bit ? MIDIUMPMessageType::data128bit : MIDIUMPMessageType::data64bit;
  static constexpr std::size_t words = is8Bit ? 4 : 2;
  static constexpr std::size_t payload = is8Bit ? 13 : 6;

  static constexpr std::size_t packetCount(std::size_t size) {
    return std::max<std::size_t>((size + payload - 1) / payload, 1);
  }
};

template <typename Event>
using FormatOf = Format<std::same_as<Event, SysEx8> || std::same_as<Event, UniversalSysEx8>>;

/// A message as its packets send it. The header fits into the first one.
struct Message {
  std::span<const std::uint8_t> header;
  std::span<const std::uint8_t> data;
  UInt4 group;
  std::uint8_t streamID = 0;

  std::size_t size() const { return header.size() + data.size(); }
};

template <typename Event>
std::size_t wordCount(const Event& event) {
  using Shape = FormatOf<Event>;
  return Shape::packetCount(SysExHeader(event).size() + event.data.size()) * Shape::words;
}

Status statusOf(bool isFirst, bool isLast) {
  if (isFirst) {
    return isLast ? Status::complete : Status::start;
  }
  return isLast ? Status::end : Status::continue_;
}

/// Writes the packets one behind the other.
template <typename Shape>
void write(const Message& message, std::span<std::uint32_t> into) {
  const auto packets = Shape::packetCount(message.size());
  auto from = message.data.begin();
  for (std::size_t packet = 0; packet < packets; ++packet) {
    std::array<std::uint8_t, Shape::words * 4> bytes{};
    auto* const payload = bytes.data() + bytes.size() - Shape::payload;
    const auto leading = packet == 0 ? std::min(message.header.size(), Shape::payload) : 0;
    auto* end = std::copy_n(message.header.begin(), leading, payload);
    const auto room = payload + Shape::payload - end;
    const auto count = std::min(room, message.data.end() - from);
    end = std::copy_n(from, count, end);
    from += count;

    const auto status = statusOf(packet == 0, packet + 1 == packets);
    // In SysEx8 the stream ID counts as one of the bytes.
    const auto byteCount = end - (bytes.data() + 2);
    bytes[0] =
        static_cast<std::uint8_t>(static_cast<unsigned>(Shape::messageType) << 4 | message.group.value());
    bytes[1] =
        static_cast<std::uint8_t>(static_cast<unsigned>(status) << 4 | static_cast<unsigned>(byteCount));
    if constexpr (Shape::is8Bit) {
      bytes[2] = message.streamID;
    }
    for (std::size_t word = 0; word < Shape::words; ++word) {
      const auto* const b = bytes.data() + word * 4;
      into[packet * Shape::words + word] = umpWord(b[0], b[1], b[2], b[3]);
    }
  }
}

template <typename Event>
void writeEvent(const Event& event, std::span<std::uint32_t> into) {
  const SysExHeader header(event);
  const std::span data(event.data.data(), event.data.size());
  if constexpr (FormatOf<Event>::is8Bit) {
    const Message message{.header = header, .data = data, .group = event.group, .streamID = event.streamID};
    write<FormatOf<Event>>(message, into);
  } else {
    const Message message{.header = header, .data = data, .group = event.group};
    write<FormatOf<Event>>(message, into);
  }
}

}  // namespace

std::size_t sysExWordCount(const SysEx7& event) {
  return wordCount(event);
}

std::size_t sysExWordCount(const UniversalSysEx7& event) {
  return wordCount(event);
}

std::size_t sysExWordCount(const SysEx8& event) {
  return wordCount(event);
}

std::size_t sysExWordCount(const UniversalSysEx8& event) {
  return wordCount(event);
}

void writeSysExWords(const SysEx7& event, std::span<std::uint32_t> into) {
  writeEvent(event, into);
}

void writeSysExWords(const UniversalSysEx7& event, std::span<std::uint32_t> into) {
  writeEvent(event, into);
}

void writeSysExWords(const SysEx8& event, std::span<std::uint32_t> into) {
  writeEvent(event, into);
}

void writeSysExWords(const UniversalSysEx8& event, std::span<std::uint32_t> into) {
  writeEvent(event, into);
}

std::size_t sysEx7WordCount(std::size_t bodySize) {
  return Format<false>::packetCount(bodySize) * Format<false>::words;
}

void writeSysEx7Words(std::span<const std::uint8_t> body, UInt4 group, std::span<std::uint32_t> into) {
  write<Format<false>>({.header = {}, .data = body, .group = group}, into);
}

std::optional<SysEx7Piece> SysEx7Piece::read(std::span<const std::uint8_t, 8> packet) {
  const auto status = midiUMPSysExStatusField(UInt4::unchecked(packet[1] >> 4));
  const std::size_t count = packet[1] & 0xF;
  if (!status || count > Format<false>::payload) {
    return std::nullopt;
  }
  return SysEx7Piece{.status = *status,
                     .group = UInt4::unchecked(packet[0] & 0xF),
                     .bytes = std::span<const std::uint8_t>(packet).subspan(2, count)};
}

}  // namespace midikit::core
