#include <algorithm>
#include <array>
#include <concepts>

#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitCore/detail/EncodedList.hpp"
#include "MIDIKitCore/detail/MIDI1Messages.hpp"
#include "MIDIKitCore/detail/SysExPackets.hpp"
#include "MIDIKitCore/detail/VoiceImage.hpp"
#include "MIDIKitCore/wire/MIDIUMPFields.hpp"
#include "MIDIKitCore/wire/UMPWords.hpp"

namespace midikit::core {
namespace {

// The most significant byte of a packet, in its place.
constexpr std::uint32_t opening(MIDIUMPMessageType type, UInt4 group) {
  return static_cast<std::uint32_t>(type) << 28 | std::uint32_t{group.value()} << 24;
}

/// Writes the words of a short event and gives where they end.
class ShortWriter {
 public:
  explicit ShortWriter(std::uint32_t* into) : into_(into) {}

 protected:
  std::uint32_t* put(std::uint32_t word) const {
    into_[0] = word;
    return into_ + 1;
  }
  std::uint32_t* put(std::uint32_t word1, std::uint32_t word2) const {
    into_[0] = word1;
    into_[1] = word2;
    return into_ + 2;
  }

  /// `opcode` is the upper nibble of the status byte.
  template <class Event>
  std::uint32_t* writeMIDI2(const Event& event, unsigned opcode, unsigned byte2, unsigned byte3,
                            std::uint32_t word2) const {
    return put(opening(MIDIUMPMessageType::midi2ChannelVoice, event.group) |
                   detail::message(opcode << 4 | event.channel.value(), byte2, byte3),
               word2);
  }

  std::uint32_t* into_;
};

/// What goes out in the same way under both protocols.
class CommonWriter : public ShortWriter {
 public:
  using ShortWriter::ShortWriter;

  std::uint32_t* operator()(const NoteCC& event) const {
    const unsigned opcode = event.controller.kind() == PerNoteController::Kind::registered ? 0x0 : 0x1;
    return writeMIDI2(event, opcode, event.note.number.value(), event.controller.number(),
                      event.value().midi2Value());
  }
  std::uint32_t* operator()(const NotePitchBend& event) const {
    return writeMIDI2(event, 0x6, event.note.number.value(), 0, event.value().midi2Value());
  }
  std::uint32_t* operator()(const NoteManagement& event) const {
    return writeMIDI2(event, 0xF, event.note.number.value(), event.optionFlags.rawValue(), 0);
  }

  std::uint32_t* operator()(const NoOp& event) const {
    return writeUtility(event, MIDIUMPUtilityStatusField::noOp, 0);
  }
  std::uint32_t* operator()(const JRClock& event) const {
    return writeUtility(event, MIDIUMPUtilityStatusField::jrClock, event.time);
  }
  std::uint32_t* operator()(const JRTimestamp& event) const {
    return writeUtility(event, MIDIUMPUtilityStatusField::jrTimestamp, event.time);
  }

  // System common and system real time.
  template <class Event>
    requires requires(const Event& event) {
      requires !requires { event.channel; };
      detail::midi1Message(event);
    }
  std::uint32_t* operator()(const Event& event) const {
    return put(opening(MIDIUMPMessageType::systemRealTimeAndCommon, event.group) |
               detail::midi1Message(event));
  }

  // System exclusive events aren't short.
  template <class Event>
    requires requires(const Event& event) { event.data; }
  std::uint32_t* operator()(const Event&) const {
    return into_;
  }

 private:
  template <class Event>
  std::uint32_t* writeUtility(const Event& event, MIDIUMPUtilityStatusField status,
                              std::uint16_t time) const {
    return put(opening(MIDIUMPMessageType::utility, event.group) | static_cast<std::uint32_t>(status) << 20 |
               time);
  }
};

// What isn't encoded by a row, null for a system exclusive event. Not inline, so that what is keeps the
// registers.
template <class Writer>
[[gnu::noinline]] std::uint32_t* writeRare(const MIDIEvent& event, std::uint32_t* into) {
  if (event.isSysEx()) {
    return nullptr;
  }
  return event.visit(Writer(into));
}

class MIDI1Writer : public CommonWriter {
 public:
  static std::uint32_t* write(const MIDIEvent& event, std::uint32_t* into) {
    std::uint32_t word = 0;
    const detail::VoiceRow& row = detail::voiceRowOf(event);
    if (detail::encodeVoice1(row, detail::VoiceImage(event), word)) [[likely]] {
      *into = word;
      return into + 1;
    }
    return writeRare<MIDI1Writer>(event, into);
  }

  using CommonWriter::CommonWriter;
  using CommonWriter::operator();

  template <class Event>
    requires requires(const Event& event) {
      event.channel;
      detail::midi1Message(event);
    }
  std::uint32_t* operator()(const Event& event) const {
    return put(opening(MIDIUMPMessageType::midi1ChannelVoice, event.group) | detail::midi1Message(event));
  }

  template <MIDIParameterNumberEvent Event>
  std::uint32_t* operator()(const Event& event) const {
    const std::uint32_t head = opening(MIDIUMPMessageType::midi1ChannelVoice, event.group);
    std::uint32_t* end = into_;
    detail::putMIDI1Messages(event, [&end, head](std::uint32_t message, bool isSent) {
      *end = head | message;
      end += isSent ? 1 : 0;
    });
    return end;
  }
};

class MIDI2Writer : public CommonWriter {
 public:
  static std::uint32_t* write(const MIDIEvent& event, std::uint32_t* into) {
    const detail::VoiceRow& row = detail::voiceRowOf(event);
    if (detail::encodeVoice2(row, detail::VoiceImage(event), into)) [[likely]] {
      return into + row.words;
    }
    return writeRare<MIDI2Writer>(event, into);
  }

  using CommonWriter::CommonWriter;
  using CommonWriter::operator();

  std::uint32_t* operator()(const NoteOn& event) const { return writeNote(event, 0x9); }
  std::uint32_t* operator()(const NoteOff& event) const { return writeNote(event, 0x8); }
  std::uint32_t* operator()(const NotePressure& event) const {
    return writeMIDI2(event, 0xA, event.note.number.value(), 0, event.amount().midi2Value());
  }
  std::uint32_t* operator()(const CC& event) const {
    return writeMIDI2(event, 0xB, event.controller.number().value(), 0, event.value().midi2Value());
  }
  std::uint32_t* operator()(const ProgramChange& event) const {
    const BytePair bank = event.bank.number().value_or(UInt14()).bytePair();
    return writeMIDI2(event, 0xC, 0, event.bank.isBankSelect() ? 1 : 0,
                      umpWord(event.program.value(), 0, bank.msb, bank.lsb));
  }
  std::uint32_t* operator()(const Pressure& event) const {
    return writeMIDI2(event, 0xD, 0, 0, event.amount().midi2Value());
  }
  std::uint32_t* operator()(const PitchBend& event) const {
    return writeMIDI2(event, 0xE, 0, 0, event.value().midi2Value());
  }

  template <MIDIParameterNumberEvent Event>
  std::uint32_t* operator()(const Event& event) const {
    const bool isRelative = event.change == MIDI2ParameterNumberChange::relative;
    const bool isAssignable = decltype(event.parameter)::type == MIDIParameterNumberType::assignable;
    const UInt7Pair number = event.parameter.parameterNumber();
    const UInt14 entry(UInt7Pair{.msb = event.parameter.dataEntryMSB().value_or(UInt7()),
                                 .lsb = event.parameter.dataEntryLSB().value_or(UInt7())});
    return writeMIDI2(event, 0x2U + (isRelative ? 2U : 0U) + (isAssignable ? 1U : 0U), number.msb.value(),
                      number.lsb.value(), scaledUp<14, 32>(entry.value()));
  }

 private:
  template <class Event>
  std::uint32_t* writeNote(const Event& event, unsigned opcode) const {
    return writeMIDI2(event, opcode, event.note.number.value(), event.attribute.attributeType(),
                      umpWord(event.velocity().midi2Value(), event.attribute.data()));
  }
};

template <class Record>
concept SysExRecord = requires(const Record& record) { sysExWordCount(record); };

/// Writes the words of a system exclusive event, if they fit, and gives their number. 0 for another one.
std::size_t writeSysEx(const MIDIEvent& event, std::span<std::uint32_t> into) {
  return event.visit(
      [into]<SysExRecord Record>(const Record& record) {
        const std::size_t count = sysExWordCount(record);
        if (count <= into.size()) {
          writeSysExWords(record, into.first(count));
        }
        return count;
      },
      [](const auto&) { return std::size_t{0}; });
}

void appendSysEx(const MIDIEvent& event, std::vector<std::uint32_t>& into) {
  const std::size_t before = into.size();
  into.resize(before + writeSysEx(event, {}));
  writeSysEx(event, std::span(into).subspan(before));
}

template <class Writer>
void appendWords(std::span<const MIDIEvent> events, std::vector<std::uint32_t>& into) {
  const auto write = [](const MIDIEvent& event, std::uint32_t* end) { return Writer::write(event, end); };
  detail::appendEncoded<MIDIEvent::maximumShortWords, 0>(events, into, write, appendSysEx);
}

}  // namespace

std::vector<UMPPacket> MIDIEvent::umpWords(MIDIProtocolVersion protocol) const {
  std::vector<std::uint32_t> words;
  appendUMPWords(protocol, words);
  std::vector<UMPPacket> packets;
  for (std::span<const std::uint32_t> rest = words; !rest.empty();) {
    const std::size_t count = umpWordCount(rest.front());
    packets.emplace_back(rest.first(count));
    rest = rest.subspan(count);
  }
  return packets;
}

void MIDIEvent::appendUMPWords(MIDIProtocolVersion protocol, std::vector<std::uint32_t>& into) const {
  core::appendUMPWords({this, 1}, protocol, into);
}

std::size_t MIDIEvent::writeUMPWords(MIDIProtocolVersion protocol, std::span<std::uint32_t> into) const {
  if (isSysEx()) {
    return writeSysEx(*this, into);
  }
  std::array<std::uint32_t, maximumShortWords> words;
  const std::uint32_t* const end = protocol == MIDIProtocolVersion::midi1_0
                                       ? MIDI1Writer::write(*this, words.data())
                                       : MIDI2Writer::write(*this, words.data());
  const auto count = static_cast<std::size_t>(end - words.data());
  if (count <= into.size()) {
    std::copy_n(words.begin(), count, into.begin());
  }
  return count;
}

void appendUMPWords(std::span<const MIDIEvent> events, MIDIProtocolVersion protocol,
                    std::vector<std::uint32_t>& into) {
  if (protocol == MIDIProtocolVersion::midi1_0) {
    appendWords<MIDI1Writer>(events, into);
  } else {
    appendWords<MIDI2Writer>(events, into);
  }
}

}  // namespace midikit::core
