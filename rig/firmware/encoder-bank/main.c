/// Four endless encoders with push switches, as MIDI controllers on channel 1. Turning sends
/// General Purpose 1 to 4 as relative values: 1 to 8 up, 127 to 120 down. Pushing sends controllers
/// 80 to 83, on and off. Encoders are on port B, two pins each; switches to ground on PD0, PD1, PD4
/// and PD5.

#include "chip/avr/avr.h"
#include "common/debounce.h"
#include "common/midi.h"
#include "common/midi_out.h"
#include "common/midi_port.h"
#include "common/tick.h"
#include "encoder-bank/encoder.h"

enum { channel = 0, encoderCount = 4, firstSwitchController = 80, contactsOpen = 3 };

static const uint8_t switchBits[encoderCount] = {1 << 0, 1 << 1, 1 << 4, 1 << 5};

static struct Encoder encoders[encoderCount] = {
    {.contacts = contactsOpen},
    {.contacts = contactsOpen},
    {.contacts = contactsOpen},
    {.contacts = contactsOpen},
};
static struct Debouncer switches[encoderCount];

static void boardStart(void) {
  clockFullSpeed();
  DDRB = 0x00;
  PORTB = 0xFF;  // pull-ups
  PORTD |= switchBits[0] | switchBits[1] | switchBits[2] | switchBits[3];
}

static void handleEncoder(uint8_t index) {
  int8_t change = encoderUpdate(&encoders[index], PINB >> (2 * index) & 3);
  if (change != 0) {
    midiSend(midiControlChange | channel, midiGeneralPurpose1 + index, (uint8_t)change & 0x7F);
  }
  if (debounce(&switches[index], (PIND & switchBits[index]) == 0)) {
    midiSend(midiControlChange | channel, firstSwitchController + index, switches[index].closed ? 127 : 0);
  }
}

int main(void) {
  boardStart();
  midiPortStart();
  tickStart();
  for (;;) {
    if (tickElapsed()) {
      for (uint8_t i = 0; i < encoderCount; ++i) {
        handleEncoder(i);
      }
    }
  }
}
