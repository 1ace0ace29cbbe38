/// Drum pattern sequencer and MIDI clock. One button starts and stops, the other takes the tempo
/// from taps; Program Change on channel 10 chooses a pattern, Start and Stop from outside work like
/// the button.

#include "chip/imxrt1062/interval_timer.h"
#include "common/debounce.h"
#include "common/midi.h"
#include "common/midi_in.h"
#include "common/midi_port.h"
#include "common/tick.h"
#include "step-sequencer/board.h"
#include "step-sequencer/sequencer.h"
#include "step-sequencer/tempo.h"

enum { channel = 9, clocksPerQuarter = 24 };

static struct Tempo tempo = {.tenthsPerMinute = 1200};
static struct Debouncer runButton, tapButton;
static struct MidiReader reader;
static uint32_t now;  ///< Milliseconds since start.

/// Clocks that have passed (timer interrupt) and that have been played (main loop).
static volatile uint8_t clocksPassed;
static uint8_t clocksPlayed;

void intervalPassed(void) {
  ++clocksPassed;
}

static void setClock(void) {
  const uint32_t perTenthOfQuarter = intervalTimerHz / clocksPerQuarter * 600u;
  intervalTimerStart(perTenthOfQuarter / tempo.tenthsPerMinute);
}

static void handleMessage(const struct MidiMessage* message) {
  if (message->status == midiStart) {
    sequencerRun(true);
  } else if (message->status == midiStop) {
    sequencerRun(false);
  } else if (message->status == (midiProgramChange | channel)) {
    sequencerChoose(message->data1);
  }
}

static void handleMidi(void) {
  uint8_t byte;
  struct MidiMessage message;
  while (midiPortReceive(&byte)) {
    if (midiRead(&reader, byte, &message)) {
      handleMessage(&message);
    }
  }
}

static void handlePanel(void) {
  if (debounce(&runButton, boardRunButton()) && runButton.closed) {
    sequencerRun(!sequencerRuns());
  }
  if (debounce(&tapButton, boardTapButton()) && tapButton.closed && tempoTap(&tempo, now)) {
    setClock();
  }
  boardLamp(sequencerBeat());
}

int main(void) {
  boardStart();
  midiPortStart();
  tickStart();
  setClock();
  for (;;) {
    handleMidi();
    while (clocksPlayed != clocksPassed) {
      ++clocksPlayed;
      sequencerClock();
    }
    if (tickElapsed()) {
      ++now;
      handlePanel();
    }
  }
}
