/// Drum sound box: plays nine sounds from flash for the notes of the percussion map on MIDI
/// channel 10.

#include <stdbool.h>

#include "chip/avr/avr.h"
#include "common/midi.h"
#include "common/midi_in.h"
#include "common/midi_port.h"
#include "rhythm-box/player.h"

enum { channel = 9 };

static struct MidiReader reader;

/// The note of each sound, by sound.
static const uint8_t notes[soundCount] = {
    [soundBassDrum] = 36, [soundSnare] = 38,   [soundClap] = 39,  [soundClosedHat] = 42, [soundOpenHat] = 46,
    [soundLowTom] = 45,   [soundHighTom] = 50, [soundCrash] = 49, [soundCowbell] = 56,
};

static void play(uint8_t note, uint8_t velocity) {
  for (uint8_t sound = 0; sound < soundCount; ++sound) {
    if (notes[sound] == note) {
      if (sound == soundClosedHat) {
        playerChoke(soundOpenHat);
      }
      playerTrigger((enum Sound)sound, velocity);
    }
  }
}

int main(void) {
  clockFullSpeed();
  playerStart();
  midiPortStart();
  for (;;) {
    uint8_t byte;
    struct MidiMessage message;
    if (midiPortReceive(&byte) && midiRead(&reader, byte, &message) &&
        message.status == (midiNoteOn | channel) && message.data2 != 0) {
      play(message.data1, message.data2);
    }
  }
}
