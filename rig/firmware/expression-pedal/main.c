/// Expression pedal with a footswitch, as a MIDI controller on channel 1.
///
/// The pedal sends Expression. The switch sends Damper Pedal, down and up. Held for two seconds, it
/// makes the pedal learn its travel: the lamp blinks, the player rocks the pedal from end to end
/// and steps on the switch once more.

#include "common/debounce.h"
#include "common/midi.h"
#include "common/midi_out.h"
#include "common/midi_port.h"
#include "common/tick.h"
#include "expression-pedal/board.h"
#include "expression-pedal/pedal.h"

enum { channel = 0, learnAfterMilliseconds = 2000, blinkMilliseconds = 256 };

static struct Pedal pedal = {.heel = 160, .toe = 3900};
static struct Debouncer footswitch;
static uint16_t heldFor;

static void sendSwitch(bool down) {
  midiSend(midiControlChange | channel, midiDamperPedal, down ? 127 : 0);
}

static void handleSwitch(void) {
  bool changed = debounce(&footswitch, boardSwitchClosed());
  if (changed && footswitch.closed && pedal.learning) {
    pedalLearnEnd(&pedal);
    heldFor = learnAfterMilliseconds;  // this press ends the learning and does nothing else
    return;
  }
  if (changed) {
    heldFor = 0;
    if (!pedal.learning) {
      sendSwitch(footswitch.closed);
    }
  }
  if (footswitch.closed && heldFor < learnAfterMilliseconds && ++heldFor == learnAfterMilliseconds) {
    sendSwitch(false);  // its release will mean nothing while learning
    pedalLearnBegin(&pedal);
  }
}

static void showLamp(void) {
  static uint16_t blink;
  ++blink;
  boardLamp(pedal.learning ? blink % blinkMilliseconds < blinkMilliseconds / 2 : footswitch.closed);
}

int main(void) {
  boardStart();
  midiPortStart();
  tickStart();
  for (;;) {
    if (!tickElapsed()) {
      continue;
    }
    handleSwitch();
    if (pedalUpdate(&pedal, boardReadPedal())) {
      midiSend(midiControlChange | channel, midiExpression, pedal.position);
    }
    showLamp();
  }
}
