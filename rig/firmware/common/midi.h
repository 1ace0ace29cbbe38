#pragma once

/// Status bytes of MIDI 1.0. Those of channel messages carry the channel (0 to 15) in the low four
/// bits.
enum MidiStatus {
  midiNoteOff = 0x80,
  midiNoteOn = 0x90,
  midiControlChange = 0xB0,
  midiProgramChange = 0xC0,
  midiChannelPressure = 0xD0,
  midiSystem = 0xF0,
  midiTimingClock = 0xF8,
  midiStart = 0xFA,
  midiStop = 0xFC,
};

/// Controller numbers of MIDI 1.0.
enum MidiController {
  midiModulationWheel = 1,
  midiExpression = 11,
  midiGeneralPurpose1 = 16,
  midiDamperPedal = 64,
  midiAllNotesOff = 123,
};
