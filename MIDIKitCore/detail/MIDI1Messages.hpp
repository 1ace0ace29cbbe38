#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "MIDIKitCore/events/ChanVoiceEvents.hpp"
#include "MIDIKitCore/events/ParameterNumberEvents.hpp"
#include "MIDIKitCore/events/SystemEvents.hpp"

// The messages of the MIDI 1.0 specification that records stand for, in the form that byte streams and
// packets share: status, first and second data byte in the lower 24 bits of an integer, 0 for a data byte
// that there isn't.

namespace midikit::core::detail {

constexpr std::uint32_t message(unsigned status, unsigned data1 = 0, unsigned data2 = 0) {
  return status << 16 | data1 << 8 | data2;
}

constexpr std::uint32_t midi1Message(const NoteOn& event) {
  const ChanVoice7Bit16BitValue& velocity = event.velocity();
  unsigned sent = velocity.midi1Value().value();
  unsigned status = 0x90;
  if (sent == 0) {
    // Velocity 0 would end the note: what was given as a 16-bit velocity never does that by accident.
    if (velocity.form() == ChanVoiceValueForm::midi2) {
      sent = 1;
    } else if (event.midi1ZeroVelocityAsNoteOff) {
      status = 0x80;
    }
  }
  return message(status | event.channel.value(), event.note.number.value(), sent);
}

constexpr std::uint32_t midi1Message(const NoteOff& event) {
  return message(0x80U | event.channel.value(), event.note.number.value(),
                 event.velocity().midi1Value().value());
}

constexpr std::uint32_t midi1Message(const NotePressure& event) {
  return message(0xA0U | event.channel.value(), event.note.number.value(),
                 event.amount().midi1Value().value());
}

constexpr std::uint32_t midi1Message(const CC& event) {
  return message(0xB0U | event.channel.value(), event.controller.number().value(),
                 event.value().midi1Value().value());
}

/// Without the bank, which takes messages of its own.
constexpr std::uint32_t midi1Message(const ProgramChange& event) {
  return message(0xC0U | event.channel.value(), event.program.value());
}

constexpr std::uint32_t midi1Message(const Pressure& event) {
  return message(0xD0U | event.channel.value(), event.amount().midi1Value().value());
}

constexpr std::uint32_t midi1Message(const PitchBend& event) {
  const BytePair bend = event.value().midi1Value().bytePair();
  return message(0xE0U | event.channel.value(), bend.lsb, bend.msb);
}

constexpr std::uint32_t midi1Message(const TimecodeQuarterFrame& event) {
  return message(0xF1, event.dataByte.value());
}

constexpr std::uint32_t midi1Message(const SongPositionPointer& event) {
  const BytePair beat = event.midiBeat.bytePair();
  return message(0xF2, beat.lsb, beat.msb);
}

constexpr std::uint32_t midi1Message(const SongSelect& event) {
  return message(0xF3, event.number.value());
}
constexpr std::uint32_t midi1Message(const UnofficialBusSelect& event) {
  return message(0xF5, event.bus.value());
}
constexpr std::uint32_t midi1Message(const TuneRequest&) {
  return message(0xF6);
}
constexpr std::uint32_t midi1Message(const TimingClock&) {
  return message(0xF8);
}
constexpr std::uint32_t midi1Message(const Start&) {
  return message(0xFA);
}
constexpr std::uint32_t midi1Message(const Continue&) {
  return message(0xFB);
}
constexpr std::uint32_t midi1Message(const Stop&) {
  return message(0xFC);
}
constexpr std::uint32_t midi1Message(const ActiveSensing&) {
  return message(0xFE);
}
constexpr std::uint32_t midi1Message(const SystemReset&) {
  return message(0xFF);
}

/// Calls `put` with each of the control changes that carry a parameter number and its data entry, and with
/// whether it's one of the event at all: an entry may lack either half, and the next message takes its place.
/// Whether the change is relative isn't told.
template <MIDIParameterNumberEvent Event, class Put>
constexpr void putMIDI1Messages(const Event& event, const Put& put) {
  const unsigned status = 0xB0U | event.channel.value();
  const auto putChange = [&](Controller controller, std::optional<UInt7> value) {
    put(message(status, controller.number().value(), value.value_or(UInt7()).value()), value.has_value());
  };
  const UInt7Pair number = event.parameter.parameterNumber();
  putChange(Event::parameterMSBController, number.msb);
  putChange(Event::parameterLSBController, number.lsb);
  putChange(Controller::dataEntry, event.parameter.dataEntryMSB());
  putChange(Controller::lsb(Controller::LSB::dataEntry), event.parameter.dataEntryLSB());
}

}  // namespace midikit::core::detail
