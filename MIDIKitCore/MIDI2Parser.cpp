#include "MIDIKitCore/MIDI2Parser.hpp"

#include <array>
#include <concepts>

#include "MIDIKitCore/SysExParser.hpp"
#include "MIDIKitCore/detail/MIDI1MessageReader.hpp"
#include "MIDIKitCore/detail/SysExPackets.hpp"
#include "MIDIKitCore/wire/MIDIUMPFields.hpp"
#include "MIDIKitCore/wire/UMPPacket.hpp"
#include "MIDIKitCore/wire/UMPWords.hpp"

namespace midikit::core {
namespace {

using namespace detail;

using Bytes = std::span<const std::uint8_t>;

constexpr UInt4 highNibble(std::uint8_t byte) {
  return UInt4::unchecked(byte >> 4);
}
constexpr UInt4 lowNibble(std::uint8_t byte) {
  return UInt4::unchecked(byte & 0xF);
}

constexpr std::uint16_t joined(std::uint8_t high, std::uint8_t low) {
  return static_cast<std::uint16_t>(high << 8 | low);
}

constexpr bool is7Bit(std::uint8_t byte) {
  return byte < 0x80;
}

/// System real-time and common messages: the MIDI 1.0 message behind the first byte.
void parseSystem(Bytes packet, AppendEvent emit) {
  const MIDI1MessageReader reader{.group = lowNibble(packet[0]), .translate = false};
  const auto status = packet[1];
  if (status >= firstRealTimeStatus) {
    reader.readRealTime(status, emit);
    return;
  }
  const auto count = midi1DataBytes(status);
  if (status < firstSystemStatus || (count >= 1 && !is7Bit(packet[2])) ||
      (count == 2 && !is7Bit(packet[3]))) {
    return;
  }
  // Bits above the seventh are there only in bytes that the message doesn't use.
  reader.readSystemCommon(status, UInt7::unchecked(packet[2] & 0x7F), UInt7::unchecked(packet[3] & 0x7F),
                          emit);
}

/// MIDI 1.0 channel voice: the same, but a note-on with velocity 0 stays one.
void parseMIDI1ChannelVoice(Bytes packet, AppendEvent emit) {
  const auto status = packet[1];
  if (status < firstStatus || status >= firstSystemStatus || !is7Bit(packet[2])) {
    return;
  }
  const MIDI1MessageReader reader{.group = lowNibble(packet[0]), .translate = false};
  reader.withChannelVoice(status, [packet, &emit](auto read) {
    const auto data1 = UInt7::unchecked(packet[2]);
    if constexpr (std::invocable<decltype(read), UInt7, AppendEvent>) {
      read(data1, emit);
    } else if (is7Bit(packet[3])) {
      read(data1, UInt7::unchecked(packet[3]), emit);
    }
  });
}

/// The opcodes of MIDI 2.0 channel voice messages.
enum class Opcode : std::uint8_t {
  registeredNoteCC = 0x0,
  assignableNoteCC = 0x1,
  registeredParameter = 0x2,
  assignableParameter = 0x3,
  relativeRegisteredParameter = 0x4,
  relativeAssignableParameter = 0x5,
  notePitchBend = 0x6,
  noteOff = 0x8,
  noteOn = 0x9,
  notePressure = 0xA,
  cc = 0xB,
  programChange = 0xC,
  pressure = 0xD,
  pitchBend = 0xE,
  noteManagement = 0xF,
};

/// A MIDI 2.0 channel voice packet taken apart. `index1` and `index2` are the third and fourth byte, of which
/// the first is a note or index in most messages.
struct ChannelVoicePacket {
  explicit ChannelVoicePacket(Bytes packet)
      : group(lowNibble(packet[0])),
        channel(lowNibble(packet[1])),
        index1(packet[2]),
        index2(packet[3]),
        upper(joined(packet[4], packet[5])),
        lower(joined(packet[6], packet[7])) {}

  std::uint32_t value() const { return std::uint32_t{upper} << 16 | lower; }
  MIDINote note() const { return UInt7::unchecked(index1); }

  UInt4 group;
  UInt4 channel;
  std::uint8_t index1;
  std::uint8_t index2;
  std::uint16_t upper;
  std::uint16_t lower;
};

template <typename Event, typename Parameter>
void parseParameter(const ChannelVoicePacket& p, MIDI2ParameterNumberChange change, AppendEvent emit) {
  if (!is7Bit(p.index2)) {
    return;
  }
  const UInt7Pair number{.msb = UInt7::unchecked(p.index1), .lsb = UInt7::unchecked(p.index2)};
  constexpr unsigned width = 14;
  const auto data = UInt14::unchecked(static_cast<std::uint16_t>(p.value() >> (32 - width))).uint7Pair();
  emit(Event(Parameter::fromWire(number, data.msb, data.lsb), change, p.channel, p.group));
}

void parseProgramChange(const ChannelVoicePacket& p, AppendEvent emit) {
  const auto program = static_cast<std::uint8_t>(p.upper >> 8);
  const BytePair bank{.msb = static_cast<std::uint8_t>(p.lower >> 8),
                      .lsb = static_cast<std::uint8_t>(p.lower & 0xFF)};
  // The bank must be well-formed even if the flag says that there is none.
  if (!is7Bit(program) || !is7Bit(bank.msb) || !is7Bit(bank.lsb)) {
    return;
  }
  const bool hasBank = (p.index2 & 1) != 0;
  emit(ProgramChange(UInt7::unchecked(program),
                     hasBank ? Bank::bankSelect(UInt14(bank)) : Bank::noBankSelect(), p.channel, p.group));
}

/// The messages with a note or an index that has been tested.
void parseIndexed(Opcode opcode, const ChannelVoicePacket& p, AppendEvent emit) {
  using enum MIDI2ParameterNumberChange;
  switch (opcode) {
    case Opcode::registeredNoteCC:
      return emit(NoteCC(p.note(), PerNoteController::registered(PerNoteController::Registered(p.index2)),
                         ChanVoice32BitValue::midi2(p.value()), p.channel, p.group));
    case Opcode::assignableNoteCC:
      return emit(NoteCC(p.note(), PerNoteController::assignable(p.index2),
                         ChanVoice32BitValue::midi2(p.value()), p.channel, p.group));
    case Opcode::registeredParameter:
      return parseParameter<RPN, RegisteredController>(p, absolute, emit);
    case Opcode::assignableParameter:
      return parseParameter<NRPN, AssignableController>(p, absolute, emit);
    case Opcode::relativeRegisteredParameter:
      return parseParameter<RPN, RegisteredController>(p, relative, emit);
    case Opcode::relativeAssignableParameter:
      return parseParameter<NRPN, AssignableController>(p, relative, emit);
    case Opcode::notePitchBend:
      return emit(NotePitchBend(p.note(), ChanVoice32BitValue::midi2(p.value()), p.channel, p.group));
    case Opcode::noteOff:
      return emit(NoteOff(p.note(), ChanVoice7Bit16BitValue::midi2(p.upper),
                          NoteAttribute::fromWire(p.index2, p.lower), p.channel, p.group));
    case Opcode::noteOn:
      return emit(NoteOn(p.note(), ChanVoice7Bit16BitValue::midi2(p.upper),
                         NoteAttribute::fromWire(p.index2, p.lower), p.channel, p.group));
    case Opcode::notePressure:
      return emit(NotePressure(p.note(), ChanVoice7Bit32BitValue::midi2(p.value()), p.channel, p.group));
    case Opcode::cc:
      return emit(
          CC(UInt7::unchecked(p.index1), ChanVoice7Bit32BitValue::midi2(p.value()), p.channel, p.group));
    case Opcode::noteManagement:
      return emit(NoteManagement(p.note(), OptionFlags::fromRawValue(p.index2), p.channel, p.group));
    default:
      return;
  }
}

void parseMIDI2ChannelVoice(Bytes packet, AppendEvent emit) {
  const ChannelVoicePacket p(packet);
  switch (const auto opcode = static_cast<Opcode>(packet[1] >> 4)) {
    case Opcode::programChange:
      return parseProgramChange(p, emit);
    case Opcode::pressure:
      return emit(Pressure(ChanVoice7Bit32BitValue::midi2(p.value()), p.channel, p.group));
    case Opcode::pitchBend:
      return emit(PitchBend(ChanVoice14Bit32BitValue::midi2(p.value()), p.channel, p.group));
    default:
      if (is7Bit(p.index1)) {
        parseIndexed(opcode, p, emit);
      }
  }
}

/// Gives whether more may follow in the packet.
bool parseUtility(Bytes packet, AppendEvent emit) {
  const auto group = lowNibble(packet[0]);
  const auto time = joined(packet[2], packet[3]);
  const auto status = midiUMPUtilityStatusField(highNibble(packet[1]));
  if (status == MIDIUMPUtilityStatusField::noOp) {
    emit(NoOp(group));
  } else if (status == MIDIUMPUtilityStatusField::jrClock) {
    emit(JRClock(time, group));
  } else if (status == MIDIUMPUtilityStatusField::jrTimestamp) {
    emit(JRTimestamp(time, group));
    return true;
  }
  return false;
}

}  // namespace

std::vector<MIDIEvent> MIDI2Parser::parsedEvents(Bytes packet) {
  std::vector<MIDIEvent> events;
  parse(packet, events);
  return events;
}

std::vector<MIDIEvent> MIDI2Parser::parsedEvents(std::span<const std::uint32_t> packet) {
  std::vector<MIDIEvent> events;
  parse(packet, events);
  return events;
}

void MIDI2Parser::parse(std::span<const std::uint32_t> packet, std::vector<MIDIEvent>& into) {
  std::array<std::uint8_t, UMPPacket::maximumWords * 4> bytes{};
  while (packet.size() > UMPPacket::maximumWords) {  // Only timestamps may stand ahead of so much.
    const auto first = writeUMPBytes(packet.first(1), bytes);
    if (umpMessageType(packet.front()) != static_cast<std::uint32_t>(MIDIUMPMessageType::utility) ||
        !parseUtility(first, AppendEvent{into})) {
      return;
    }
    packet = packet.subspan(1);
  }
  parse(writeUMPBytes(packet, bytes), into);
}

void MIDI2Parser::parse(Bytes packet, std::vector<MIDIEvent>& into) {
  if (packet.size() % 4 != 0) {
    return;
  }
  const AppendEvent emit{into};
  while (!packet.empty()) {
    switch (static_cast<MIDIUMPMessageType>(packet[0] >> 4)) {
      case MIDIUMPMessageType::utility:
        if (parseUtility(packet, emit)) {
          packet = packet.subspan(4);
          continue;
        }
        return;
      case MIDIUMPMessageType::systemRealTimeAndCommon:
        return packet.size() == 4 ? parseSystem(packet, emit) : void();
      case MIDIUMPMessageType::midi1ChannelVoice:
        return packet.size() == 4 ? parseMIDI1ChannelVoice(packet, emit) : void();
      case MIDIUMPMessageType::data64bit:
        return packet.size() == 8 ? parseData64(packet.first<8>(), into) : void();
      case MIDIUMPMessageType::midi2ChannelVoice:
        return packet.size() == 8 ? parseMIDI2ChannelVoice(packet, emit) : void();
      case MIDIUMPMessageType::data128bit:
        return packet.size() == 16 ? parseData128(packet.first<16>(), into) : void();
    }
    return;
  }
}

void MIDI2Parser::parseData64(std::span<const std::uint8_t, 8> packet, std::vector<MIDIEvent>& into) {
  const auto piece = SysEx7Piece::read(packet);
  if (!piece) {
    return;
  }
  auto& buffer = sysEx7MultiPartUMPBuffer_;
  if (const auto message = buffer.take(piece->status, piece->bytes, sysExLimit_)) {
    appendSysEx7Body(*message, piece->group, into);
    if (piece->status == MIDIUMPSysExStatusField::end) {
      buffer.clear();
    }
  }
}

void MIDI2Parser::parseData128(std::span<const std::uint8_t, 16> packet, std::vector<MIDIEvent>& into) {
  constexpr std::size_t mostBytes = 14;
  // The other statuses are those of mixed data sets, which have no event, and those that nobody has defined.
  const auto status = midiUMPSysExStatusField(highNibble(packet[1]));
  const auto count = lowNibble(packet[1]).value();
  if (!status || count == 0 || count > mostBytes) {
    return;
  }
  const auto group = lowNibble(packet[0]);
  const auto streamID = packet[2];
  const auto payload = Bytes(packet).subspan(2, count);
  if (*status == MIDIUMPSysExStatusField::complete) {
    appendSysEx8(payload, group, into);
    return;
  }
  if (*status == MIDIUMPSysExStatusField::start) {
    auto& buffer = sysEx8MultiPartUMPBuffer_[streamID];
    buffer.clear();
    buffer.append(payload, sysExLimit_);
    return;
  }
  const auto found = sysEx8MultiPartUMPBuffer_.find(streamID);
  if (found == sysEx8MultiPartUMPBuffer_.end() || found->second.empty()) {
    return;
  }
  auto& buffer = found->second;
  buffer.append(payload.subspan(1), sysExLimit_);
  if (*status == MIDIUMPSysExStatusField::end) {
    appendSysEx8(buffer.bytes(), group, into);
    buffer.clear();
  }
}

}  // namespace midikit::core
