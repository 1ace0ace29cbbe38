/// Wavetable synthesiser: eight voices of pulse waves from a bank in flash, played over MIDI
/// channel 1. The modulation wheel sets the pulse width.

#include "chip/imxrt1062/interval_timer.h"
#include "common/midi.h"
#include "common/midi_in.h"
#include "common/midi_port.h"
#include "wavetable-synth/converter.h"
#include "wavetable-synth/synth.h"

enum { channel = 0 };

static struct MidiReader reader;

void intervalPassed(void) {
  converterWrite(synthRender());
}

static void handleController(uint8_t controller, uint8_t value) {
  if (controller == midiModulationWheel) {
    synthSetWidth(value);
  } else if (controller == midiAllNotesOff) {
    synthAllNotesOff();
  }
}

static void handleMessage(const struct MidiMessage* message) {
  switch (message->status) {
    case midiNoteOn | channel:
      if (message->data2 != 0) {
        synthNoteOn(message->data1, message->data2);
      } else {
        synthNoteOff(message->data1);
      }
      break;
    case midiNoteOff | channel:
      synthNoteOff(message->data1);
      break;
    case midiControlChange | channel:
      handleController(message->data1, message->data2);
      break;
    default:
      break;
  }
}

int main(void) {
  converterStart();
  midiPortStart();
  intervalTimerStart(intervalTimerHz / synthSampleRate);
  for (;;) {
    uint8_t byte;
    struct MidiMessage message;
    if (midiPortReceive(&byte) && midiRead(&reader, byte, &message)) {
      handleMessage(&message);
    }
  }
}
