#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitCore/wire/MIDI1Status.hpp"

namespace midikit::core::detail {

/// What the parsers do with the record of an event: put it behind what a list holds.
struct AppendEvent {
  std::vector<MIDIEvent>& into;

  template <typename Record>
  void operator()(Record&& record) const {
    into.emplace_back(std::forward<Record>(record));
  }
};

/// Reads messages of which all data bytes are there, and gives `emit` the event of each, if it has one.
struct MIDI1MessageReader {
  UInt4 group;
  bool translate;

  /// Calls `use` once with the reader of that channel voice status, which takes the data bytes, one or two,
  /// and `emit`. So a run of messages under one status asks only once what they are.
  template <typename Use>
  auto withChannelVoice(std::uint8_t status, const Use& use) const {
    const auto channel = UInt4::unchecked(status & 0xF);
    switch (status >> 4) {
      case 0x8:
        return use([=, group = group](UInt7 note, UInt7 velocity, const auto& emit) {
          emit(NoteOff(note, ChanVoice7Bit16BitValue::midi1(velocity), channel, group));
        });
      case 0x9:
        return use([=, group = group, translate = translate](UInt7 note, UInt7 velocity, const auto& emit) {
          if (velocity == UInt7::minimum() && translate) {
            emit(NoteOff(note, ChanVoice7Bit16BitValue::midi1(velocity), channel, group));
          } else {
            emit(NoteOn(note, ChanVoice7Bit16BitValue::midi1(velocity), channel, group));
          }
        });
      case 0xA:
        return use([=, group = group](UInt7 note, UInt7 amount, const auto& emit) {
          emit(NotePressure(note, ChanVoice7Bit32BitValue::midi1(amount), channel, group));
        });
      case 0xB:
        return use([=, group = group](UInt7 controller, UInt7 value, const auto& emit) {
          emit(CC(controller, ChanVoice7Bit32BitValue::midi1(value), channel, group));
        });
      case 0xC:
        return use([=, group = group](UInt7 program, const auto& emit) {
          emit(ProgramChange(program, channel, group));
        });
      case 0xD:
        return use([=, group = group](UInt7 amount, const auto& emit) {
          emit(Pressure(ChanVoice7Bit32BitValue::midi1(amount), channel, group));
        });
      default:
        return use([=, group = group](UInt7 lsb, UInt7 msb, const auto& emit) {
          emit(PitchBend(ChanVoice14Bit32BitValue::midi1(joined(lsb, msb)), channel, group));
        });
    }
  }

  template <typename Emit>
  void readSystemCommon(std::uint8_t status, UInt7 data1, UInt7 data2, Emit&& emit) const {
    switch (status) {
      case timecodeStatus:
        return emit(TimecodeQuarterFrame(data1, group));
      case songPositionStatus:
        return emit(SongPositionPointer(joined(data1, data2), group));
      case songSelectStatus:
        return emit(SongSelect(data1, group));
      case tuneRequestStatus:
        return emit(TuneRequest(group));
      default:
        return;
    }
  }

  template <typename Emit>
  void readRealTime(std::uint8_t status, Emit&& emit) const {
    switch (status) {
      case 0xF8:
        return emit(TimingClock(group));
      case 0xFA:
        return emit(Start(group));
      case 0xFB:
        return emit(Continue(group));
      case 0xFC:
        return emit(Stop(group));
      case 0xFE:
        return emit(ActiveSensing(group));
      case 0xFF:
        return emit(SystemReset(group));
      default:
        return;
    }
  }

 private:
  static UInt14 joined(UInt7 lsb, UInt7 msb) { return UInt14(UInt7Pair{.msb = msb, .lsb = lsb}); }
};

}  // namespace midikit::core::detail
