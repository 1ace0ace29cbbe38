#include <algorithm>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitInternals/RadixText.hpp"

namespace midikit::core {
namespace {

std::string hex(unsigned number) {
  return internals::hexText(number, {.prefix = true});
}
std::string hex(UInt4 number) {
  return hex(number.value());
}
std::string hex(UInt7 number) {
  return hex(number.value());
}
std::string hex(MIDINote note) {
  return hex(note.number);
}

/// Long data is cut off: a log needs a line, not a dump.
std::string hex(const SysExData& data) {
  constexpr std::size_t longest = 64;
  const std::span shown(data.data(), std::min(longest, data.size()));
  std::string text = internals::bracketedHexText(shown, 2);
  if (data.size() > longest) {
    text += " and so on, " + std::to_string(data.size()) + " bytes";
  }
  return text;
}

/// A tag, then fields with their labels, separated and with a closing parenthesis at the end.
class Line {
 public:
  explicit Line(std::string_view tag) : text_(tag) {}

  /// The tag has the label of the first field already, if it has one at all.
  Line& add(std::string_view label, std::string_view value) {
    text_.append(isFirst_ ? "" : ", ").append(label).append(value);
    isFirst_ = false;
    return *this;
  }
  std::string close() { return text_ + ")"; }

  template <class Record>
  std::string closeWithChannel(const Record& record) {
    return add("chan: ", hex(record.channel)).closeWithGroup(record);
  }
  template <class Record>
  std::string closeWithGroup(const Record& record) {
    return add("group: ", hex(record.group)).close();
  }

 private:
  std::string text_;
  bool isFirst_ = true;
};

template <class Note>
std::string noteText(std::string_view tag, const Note& event) {
  Line line(tag);
  line.add("", hex(event.note)).add("vel: ", event.velocity().description());
  if (event.attribute != NoteAttribute::none()) {
    line.add("", event.attribute.description());
  }
  return line.closeWithChannel(event);
}

template <class Event>
std::string parameterText(std::string_view tag, const Event& event) {
  return Line(tag)
      .add("", event.parameter.description())
      .add("change: ", description(event.change))
      .closeWithChannel(event);
}

template <class Event>
Line universalLine(std::string_view tag, const Event& event) {
  Line line(tag);
  line.add("", description(event.universalType))
      .add("deviceID: ", hex(event.deviceID))
      .add("subID1: ", hex(event.subID1))
      .add("subID2: ", hex(event.subID2))
      .add("data: ", hex(event.data));
  return line;
}

/// A record with nothing but a group.
std::string groupText(std::string_view tag, UInt4 group) {
  return Line(tag).add("", hex(group)).close();
}

struct Describer {
  std::string operator()(const NoteOn& event) const { return noteText("noteOn(", event); }
  std::string operator()(const NoteOff& event) const { return noteText("noteOff(", event); }
  std::string operator()(const NoteCC& event) const {
    return Line("noteCC(note: ")
        .add("", hex(event.note))
        .add("controller: ", event.controller.description())
        .add("val: ", event.value().description())
        .closeWithChannel(event);
  }
  std::string operator()(const NotePitchBend& event) const {
    return Line("notePitchBend(note: ")
        .add("", hex(event.note))
        .add("value: ", event.value().description())
        .closeWithChannel(event);
  }
  std::string operator()(const NotePressure& event) const {
    return Line("notePressure(note: ")
        .add("", hex(event.note))
        .add("amount: ", event.amount().description())
        .closeWithChannel(event);
  }
  std::string operator()(const NoteManagement& event) const {
    return Line("noteManagement(options: ")
        .add("", event.optionFlags.description())
        .add("note: ", hex(event.note))
        .closeWithChannel(event);
  }
  std::string operator()(const CC& event) const {
    return Line("cc(")
        .add("", event.controller.description())
        .add("val: ", event.value().description())
        .closeWithChannel(event);
  }
  std::string operator()(const ProgramChange& event) const {
    return Line("prgChange(")
        .add("", event.program.description())
        .add("bank: ", event.bank.description())
        .closeWithChannel(event);
  }
  std::string operator()(const PitchBend& event) const {
    return Line("pitchBend(").add("", event.value().description()).closeWithChannel(event);
  }
  std::string operator()(const Pressure& event) const {
    return Line("pressure(amount: ").add("", event.amount().description()).closeWithChannel(event);
  }
  std::string operator()(const RPN& event) const { return parameterText("rpn(", event); }
  std::string operator()(const NRPN& event) const { return parameterText("nrpn(", event); }

  std::string operator()(const SysEx7& event) const {
    return Line("sysEx7(mfr: ")
        .add("", event.manufacturer.description())
        .add("data: ", hex(event.data))
        .closeWithGroup(event);
  }
  std::string operator()(const UniversalSysEx7& event) const {
    return universalLine("universalSysEx7(", event).closeWithGroup(event);
  }
  std::string operator()(const SysEx8& event) const {
    return Line("sysEx8(mfr: ")
        .add("", event.manufacturer.description())
        .add("data: ", hex(event.data))
        .add("streamID: ", hex(event.streamID))
        .closeWithGroup(event);
  }
  std::string operator()(const UniversalSysEx8& event) const {
    return universalLine("universalSysEx8(", event)
        .add("streamID: ", hex(event.streamID))
        .closeWithGroup(event);
  }

  std::string operator()(const TimecodeQuarterFrame& event) const {
    return Line("timecodeQF(").add("", hex(event.dataByte)).closeWithGroup(event);
  }
  std::string operator()(const SongPositionPointer& event) const {
    return Line("songPositionPointer(beat: ").add("", event.midiBeat.description()).closeWithGroup(event);
  }
  std::string operator()(const SongSelect& event) const {
    return Line("songSelect(number: ").add("", event.number.description()).closeWithGroup(event);
  }
  std::string operator()(const UnofficialBusSelect& event) const {
    return Line("unofficialBusSelect(bus: ").add("", event.bus.description()).closeWithGroup(event);
  }
  std::string operator()(const TuneRequest& event) const {
    return groupText("tuneRequest(group: ", event.group);
  }
  std::string operator()(const TimingClock& event) const {
    return groupText("timingClock(group: ", event.group);
  }
  std::string operator()(const Start& event) const { return groupText("start(group: ", event.group); }
  std::string operator()(const Continue& event) const { return groupText("continue(group: ", event.group); }
  std::string operator()(const Stop& event) const { return groupText("stop(group: ", event.group); }
  std::string operator()(const ActiveSensing& event) const {
    return groupText("activeSensing(group: ", event.group);
  }
  std::string operator()(const SystemReset& event) const {
    return groupText("systemReset(group: ", event.group);
  }
  std::string operator()(const NoOp& event) const { return groupText("noOp(group: ", event.group); }
  std::string operator()(const JRClock& event) const {
    return Line("jrClock(").add("", std::to_string(event.time)).closeWithGroup(event);
  }
  std::string operator()(const JRTimestamp& event) const {
    return Line("jrTimestamp(").add("", std::to_string(event.time)).closeWithGroup(event);
  }
};

}  // namespace

std::string MIDIEvent::debugDescription() const {
  return visit(Describer());
}

}  // namespace midikit::core
