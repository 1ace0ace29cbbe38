#include "common/midi_in.h"

#include "common/midi.h"

static bool hasOneDataByte(uint8_t status) {
  uint8_t kind = status & 0xF0;
  return kind == midiProgramChange || kind == midiChannelPressure;
}

bool midiRead(struct MidiReader* reader, uint8_t byte, struct MidiMessage* message) {
  if (byte >= midiTimingClock) {  // real time: may stand between any two bytes
    *message = (struct MidiMessage){.status = byte};
    return true;
  }
  if (byte >= 0x80) {
    reader->status = byte < midiSystem ? byte : 0;
    reader->hasData1 = false;
    return false;
  }
  if (reader->status == 0) {
    return false;
  }
  if (hasOneDataByte(reader->status)) {
    *message = (struct MidiMessage){.status = reader->status, .data1 = byte};
    return true;
  }
  if (!reader->hasData1) {
    reader->data1 = byte;
    reader->hasData1 = true;
    return false;
  }
  reader->hasData1 = false;
  *message = (struct MidiMessage){reader->status, reader->data1, byte};
  return true;
}
