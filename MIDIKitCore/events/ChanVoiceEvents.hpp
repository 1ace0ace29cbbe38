#pragma once

#include <tuple>

#include "MIDIKitCore/controllers/Bank.hpp"
#include "MIDIKitCore/controllers/Controller.hpp"
#include "MIDIKitCore/controllers/NoteAttribute.hpp"
#include "MIDIKitCore/controllers/OptionFlags.hpp"
#include "MIDIKitCore/controllers/PerNoteController.hpp"
#include "MIDIKitCore/notes/MIDINote.hpp"
#include "MIDIKitCore/numbers/ChanVoiceValue.hpp"
#include "MIDIKitCore/numbers/UInt.hpp"

namespace midikit::core {

// The channel voice records, all of them plain values that copy as memory. A `note` is given as a MIDINote or
// as its number, a value in any of its forms; writing a field of the kind `Validated` clamps a number to its
// interval. Equality is field by field, across the forms of a value. `fields()` are references to the fields
// in the order of the constructor; in memory they stand so that those that most records have are in the same
// place in each.

/// A note begins.
struct NoteOn {
  constexpr NoteOn(MIDINote note_, const ChanVoice7Bit16BitValue& velocity_, NoteAttribute attribute_,
                   UInt4 channel_, UInt4 group_ = {}, bool midi1ZeroVelocityAsNoteOff_ = false)
      : _velocity(velocity_),
        group(group_),
        channel(channel_),
        note(note_),
        attribute(attribute_),
        midi1ZeroVelocityAsNoteOff(midi1ZeroVelocityAsNoteOff_) {}
  constexpr NoteOn(MIDINote note_, const ChanVoice7Bit16BitValue& velocity_, UInt4 channel_,
                   UInt4 group_ = {}, bool midi1ZeroVelocityAsNoteOff_ = false)
      : NoteOn(note_, velocity_, NoteAttribute::none(), channel_, group_, midi1ZeroVelocityAsNoteOff_) {}

  /// As it was given, a number clamped to its interval.
  constexpr const ChanVoice7Bit16BitValue& velocity() const { return _velocity; }

  friend constexpr bool operator==(const NoteOn&, const NoteOn&) = default;
  constexpr auto fields() const {
    return std::tie(note, _velocity, attribute, channel, group, midi1ZeroVelocityAsNoteOff);
  }

  ChanVoice7Bit16BitValue::Validated _velocity;
  UInt4 group;
  UInt4 channel;
  MIDINote note;
  NoteAttribute attribute;
  /// In MIDI 1.0 form a velocity of 0, unless it's held as a 16-bit value, goes out with the status of a
  /// note-off.
  bool midi1ZeroVelocityAsNoteOff;
};

/// A note ends.
struct NoteOff {
  constexpr NoteOff(MIDINote note_, const ChanVoice7Bit16BitValue& velocity_, NoteAttribute attribute_,
                    UInt4 channel_, UInt4 group_ = {})
      : _velocity(velocity_), group(group_), channel(channel_), note(note_), attribute(attribute_) {}
  constexpr NoteOff(MIDINote note_, const ChanVoice7Bit16BitValue& velocity_, UInt4 channel_,
                    UInt4 group_ = {})
      : NoteOff(note_, velocity_, NoteAttribute::none(), channel_, group_) {}

  /// As it was given, a number clamped to its interval.
  constexpr const ChanVoice7Bit16BitValue& velocity() const { return _velocity; }

  friend constexpr bool operator==(const NoteOff&, const NoteOff&) = default;
  constexpr auto fields() const { return std::tie(note, _velocity, attribute, channel, group); }

  ChanVoice7Bit16BitValue::Validated _velocity;
  UInt4 group;
  UInt4 channel;
  MIDINote note;
  NoteAttribute attribute;
};

/// A controller of one note moves (MIDI 2.0 only).
struct NoteCC {
  using PerNoteController = core::PerNoteController;

  constexpr NoteCC(MIDINote note_, PerNoteController controller_, const ChanVoice32BitValue& value_,
                   UInt4 channel_, UInt4 group_ = {})
      : _value(value_), group(group_), channel(channel_), note(note_), controller(controller_) {}

  /// As it was given, a number clamped to its interval.
  constexpr const ChanVoice32BitValue& value() const { return _value; }

  friend constexpr bool operator==(const NoteCC&, const NoteCC&) = default;
  constexpr auto fields() const { return std::tie(note, controller, _value, channel, group); }

  ChanVoice32BitValue::Validated _value;
  UInt4 group;
  UInt4 channel;
  MIDINote note;
  PerNoteController controller;
};

/// The pitch of one note bends (MIDI 2.0 only).
struct NotePitchBend {
  constexpr NotePitchBend(MIDINote note_, const ChanVoice32BitValue& value_, UInt4 channel_,
                          UInt4 group_ = {})
      : _value(value_), group(group_), channel(channel_), note(note_) {}

  /// As it was given, a number clamped to its interval. 0.5 is no bend.
  constexpr const ChanVoice32BitValue& value() const { return _value; }

  friend constexpr bool operator==(const NotePitchBend&, const NotePitchBend&) = default;
  constexpr auto fields() const { return std::tie(note, _value, channel, group); }

  ChanVoice32BitValue::Validated _value;
  UInt4 group;
  UInt4 channel;
  MIDINote note;
};

/// Pressure on one key: polyphonic aftertouch.
struct NotePressure {
  constexpr NotePressure(MIDINote note_, const ChanVoice7Bit32BitValue& amount_, UInt4 channel_,
                         UInt4 group_ = {})
      : _amount(amount_), group(group_), channel(channel_), note(note_) {}

  /// As it was given, a number clamped to its interval.
  constexpr const ChanVoice7Bit32BitValue& amount() const { return _amount; }

  friend constexpr bool operator==(const NotePressure&, const NotePressure&) = default;
  constexpr auto fields() const { return std::tie(note, _amount, channel, group); }

  ChanVoice7Bit32BitValue::Validated _amount;
  UInt4 group;
  UInt4 channel;
  MIDINote note;
};

/// What becomes of the controllers of one note (MIDI 2.0 only).
struct NoteManagement {
  constexpr NoteManagement(MIDINote note_, OptionFlags optionFlags_, UInt4 channel_, UInt4 group_ = {})
      : group(group_), channel(channel_), note(note_), optionFlags(optionFlags_) {}

  friend constexpr bool operator==(const NoteManagement&, const NoteManagement&) = default;
  constexpr auto fields() const { return std::tie(note, optionFlags, channel, group); }

  UInt4 group;
  UInt4 channel;
  MIDINote note;
  OptionFlags optionFlags;
};

/// A controller moves: control change.
struct CC {
  using Controller = core::Controller;

  constexpr CC(Controller controller_, const ChanVoice7Bit32BitValue& value_, UInt4 channel_,
               UInt4 group_ = {})
      : _value(value_), group(group_), channel(channel_), controller(controller_) {}
  /// `controllerNumber` is the controller's number.
  constexpr CC(UInt7 controllerNumber, const ChanVoice7Bit32BitValue& value_, UInt4 channel_,
               UInt4 group_ = {})
      : CC(Controller(controllerNumber), value_, channel_, group_) {}

  /// As it was given, a number clamped to its interval.
  constexpr const ChanVoice7Bit32BitValue& value() const { return _value; }

  friend constexpr bool operator==(const CC&, const CC&) = default;
  constexpr auto fields() const { return std::tie(controller, _value, channel, group); }

  ChanVoice7Bit32BitValue::Validated _value;
  UInt4 group;
  UInt4 channel;
  Controller controller;
};

/// Another program, and another bank with it if one is given.
struct ProgramChange {
  constexpr ProgramChange(UInt7 program_, Bank bank_, UInt4 channel_, UInt4 group_ = {})
      : group(group_), channel(channel_), program(program_), bank(bank_) {}
  /// Without a bank.
  constexpr ProgramChange(UInt7 program_, UInt4 channel_, UInt4 group_ = {})
      : ProgramChange(program_, Bank::noBankSelect(), channel_, group_) {}

  friend constexpr bool operator==(const ProgramChange&, const ProgramChange&) = default;
  constexpr auto fields() const { return std::tie(program, bank, channel, group); }

  UInt4 group;
  UInt4 channel;
  UInt7 program;
  Bank bank;
};

/// The pitch of a whole channel bends.
struct PitchBend {
  constexpr PitchBend(const ChanVoice14Bit32BitValue& value_, UInt4 channel_, UInt4 group_ = {})
      : _value(value_), group(group_), channel(channel_) {}

  /// As it was given, a number clamped to its interval. The centre is no bend.
  constexpr const ChanVoice14Bit32BitValue& value() const { return _value; }

  friend constexpr bool operator==(const PitchBend&, const PitchBend&) = default;
  constexpr auto fields() const { return std::tie(_value, channel, group); }

  ChanVoice14Bit32BitValue::Validated _value;
  UInt4 group;
  UInt4 channel;
};

/// Pressure on a whole channel: channel aftertouch.
struct Pressure {
  constexpr Pressure(const ChanVoice7Bit32BitValue& amount_, UInt4 channel_, UInt4 group_ = {})
      : _amount(amount_), group(group_), channel(channel_) {}

  /// As it was given, a number clamped to its interval.
  constexpr const ChanVoice7Bit32BitValue& amount() const { return _amount; }

  friend constexpr bool operator==(const Pressure&, const Pressure&) = default;
  constexpr auto fields() const { return std::tie(_amount, channel, group); }

  ChanVoice7Bit32BitValue::Validated _amount;
  UInt4 group;
  UInt4 channel;
};

}  // namespace midikit::core
