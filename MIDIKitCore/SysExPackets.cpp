#include "MIDIKitCore/SysExPackets.hpp"

#include <algorithm>
#include <array>
#include <concepts>

#include "MIDIKitCore/MIDIUMPFields.hpp"
#include "MIDIKitCore/SysExBytes.hpp"
#include "MIDIKitCore/UMPWords.hpp"

namespace midikit::core {
namespace {

using Status = MIDIUMPSysExStatusField;

/// What tells the packets of SysEx7 and SysEx8 apart.
template <typename Event>
struct Format {
  static constexpr bool is8Bit = std::same_as<Event, SysEx8> || std::same_as<Event, UniversalSysEx8>;
  static constexpr auto messageType = is8Bit ? MIDIUMPMessageType::data128bit : MIDIUMPMessageType::data64bit;
  static constexpr std::size_t words = is8Bit ? 4 : 2;
  static constexpr std::size_t payload = is8Bit ? 13 : 6;
};

template <typename Event>
std::size_t payloadSize(const Event& event) {
  return SysExHeader(event).size() + event.data.size();
}

template <typename Event>
std::size_t packetCount(const Event& event) {
  return (payloadSize(event) + Format<Event>::payload - 1) / Format<Event>::payload;
}

Status statusOf(bool isFirst, bool isLast) {
  if (isFirst) {
    return isLast ? Status::complete : Status::start;
  }
  return isLast ? Status::end : Status::continue_;
}

/// Writes the packets one behind the other. The header fits into the first one.
template <typename Event>
void write(const Event& event, std::span<std::uint32_t> into) {
  using Shape = Format<Event>;
  const SysExHeader header(event);
  const auto packets = packetCount(event);
  const auto* from = event.data.begin();
  for (std::size_t packet = 0; packet < packets; ++packet) {
    std::array<std::uint8_t, Shape::words * 4> bytes{};
    auto* const payload = bytes.data() + bytes.size() - Shape::payload;
    auto* end = packet == 0 ? std::ranges::copy(header, payload).out : payload;
    const auto room = payload + Shape::payload - end;
    const auto count = std::min(room, event.data.end() - from);
    end = std::copy_n(from, count, end);
    from += count;

    const auto status = statusOf(packet == 0, packet + 1 == packets);
    // In SysEx8 the stream ID counts as one of the bytes.
    const auto byteCount = end - (bytes.data() + 2);
    bytes[0] =
        static_cast<std::uint8_t>(static_cast<unsigned>(Shape::messageType) << 4 | event.group.value());
    bytes[1] =
        static_cast<std::uint8_t>(static_cast<unsigned>(status) << 4 | static_cast<unsigned>(byteCount));
    if constexpr (Shape::is8Bit) {
      bytes[2] = event.streamID;
    }
    for (std::size_t word = 0; word < Shape::words; ++word) {
      const auto* const b = bytes.data() + word * 4;
      into[packet * Shape::words + word] = umpWord(b[0], b[1], b[2], b[3]);
    }
  }
}

}  // namespace

std::size_t sysExWordCount(const SysEx7& event) {
  return packetCount(event) * Format<SysEx7>::words;
}

std::size_t sysExWordCount(const UniversalSysEx7& event) {
  return packetCount(event) * Format<UniversalSysEx7>::words;
}

std::size_t sysExWordCount(const SysEx8& event) {
  return packetCount(event) * Format<SysEx8>::words;
}

std::size_t sysExWordCount(const UniversalSysEx8& event) {
  return packetCount(event) * Format<UniversalSysEx8>::words;
}

void writeSysExWords(const SysEx7& event, std::span<std::uint32_t> into) {
  write(event, into);
}

void writeSysExWords(const UniversalSysEx7& event, std::span<std::uint32_t> into) {
  write(event, into);
}

void writeSysExWords(const SysEx8& event, std::span<std::uint32_t> into) {
  write(event, into);
}

void writeSysExWords(const UniversalSysEx8& event, std::span<std::uint32_t> into) {
  write(event, into);
}

}  // namespace midikit::core
