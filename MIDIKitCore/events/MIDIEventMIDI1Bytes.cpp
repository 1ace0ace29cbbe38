#include <algorithm>
#include <array>
#include <concepts>
#include <cstring>

#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitCore/detail/EncodedList.hpp"
#include "MIDIKitCore/detail/MIDI1Messages.hpp"
#include "MIDIKitCore/detail/VoiceImage.hpp"
#include "MIDIKitCore/sysex/SysExBytes.hpp"
#include "MIDIKitCore/wire/MIDI1Status.hpp"

namespace midikit::core {
namespace {

// A message is written with one byte too many, which is quicker than to choose.
constexpr std::size_t spill = 1;

/// Writes the bytes of a short event and gives where they end.
class ShortWriter {
 public:
  explicit ShortWriter(std::uint8_t* into) : into_(into) {}

  static std::uint8_t* write(std::uint8_t* into, std::size_t size, std::uint32_t message) {
    const std::uint32_t bytes = detail::highestFirst(message << 8);
    std::memcpy(into, &bytes, sizeof bytes);
    return into + size;
  }

  std::uint8_t* operator()(const ProgramChange& event) const {
    std::uint8_t* end = into_;
    if (const auto bank = event.bank.number()) {
      const unsigned status = 0xB0U | event.channel.value();
      end = write(end, 3, detail::message(status, 0x00, bank->bytePair().msb));
      end = write(end, 3, detail::message(status, 0x20, bank->bytePair().lsb));
    }
    return write(end, 2, detail::midi1Message(event));
  }

  template <MIDIParameterNumberEvent Event>
  std::uint8_t* operator()(const Event& event) const {
    std::uint8_t* end = into_;
    detail::putMIDI1Messages(
        event, [&end](std::uint32_t message, bool isSent) { end = write(end, isSent ? 3 : 0, message); });
    return end;
  }

  template <class Event>
    requires requires(const Event& event) { detail::midi1Message(event); }
  std::uint8_t* operator()(const Event& event) const {
    const std::uint32_t message = detail::midi1Message(event);
    return write(into_, midi1MessageSize(message >> 16), message);
  }

  // What MIDI 1.0 can't express, and system exclusive events, which aren't short.
  template <class Event>
  std::uint8_t* operator()(const Event&) const {
    return into_;
  }

 private:
  std::uint8_t* into_;
};

// What isn't encoded by a row. Not inline, so that what is keeps the registers.
[[gnu::noinline]] std::uint8_t* writeRare(const MIDIEvent& event, std::uint8_t* into) {
  if (event.isSysEx()) {
    return nullptr;
  }
  return event.visit(ShortWriter(into));
}

// Null for a system exclusive event. Inline, so that a list is encoded without a call for most events.
[[gnu::always_inline]] inline std::uint8_t* write(const MIDIEvent& event, std::uint8_t* into) {
  std::uint32_t word = 0;
  const detail::VoiceRow& row = detail::voiceRowOf(event);
  if (detail::encodeVoice1(row, detail::VoiceImage(event), word)) [[likely]] {
    return ShortWriter::write(into, row.size, word);
  }
  return writeRare(event, into);
}

/// Whether the record is a system exclusive one that MIDI 1.0 can express.
template <class Record>
concept SysEx7Record = std::same_as<Record, SysEx7> || std::same_as<Record, UniversalSysEx7>;

void appendSysEx(const MIDIEvent& event, std::vector<std::uint8_t>& into) {
  event.visit([&]<SysEx7Record Record>(const Record& record) { appendSysEx7Bytes(record, {}, into); },
              [](const auto&) {});
}

template <class Record>
std::size_t writeSysEx(const Record& record, std::span<std::uint8_t> into) {
  const SysExHeader header(record);
  const std::size_t size = 1 + header.size() + record.data.size() + 1;
  if (size <= into.size()) {
    into[0] = sysExStatus;
    const auto body = std::ranges::copy(header, into.begin() + 1).out;
    *std::ranges::copy(record.data, body).out = sysExEndStatus;
  }
  return size;
}

}  // namespace

std::vector<std::uint8_t> MIDIEvent::midi1Bytes() const {
  std::vector<std::uint8_t> bytes;
  appendMIDI1Bytes(bytes);
  return bytes;
}

void MIDIEvent::appendMIDI1Bytes(std::vector<std::uint8_t>& into) const {
  core::appendMIDI1Bytes({this, 1}, into);
}

std::size_t MIDIEvent::writeMIDI1Bytes(std::span<std::uint8_t> into) const {
  if (isSysEx()) {
    return visit([into]<SysEx7Record Record>(const Record& record) { return writeSysEx(record, into); },
                 [](const auto&) { return std::size_t{0}; });
  }
  std::array<std::uint8_t, maximumShortBytes + spill> bytes;
  const auto size = static_cast<std::size_t>(write(*this, bytes.data()) - bytes.data());
  if (size <= into.size()) {
    std::copy_n(bytes.begin(), size, into.begin());
  }
  return size;
}

void appendMIDI1Bytes(std::span<const MIDIEvent> events, std::vector<std::uint8_t>& into) {
  detail::appendEncoded<MIDIEvent::maximumShortBytes, spill>(events, into, write, appendSysEx);
}

}  // namespace midikit::core
