#include "step-sequencer/sequencer.h"

#include "common/midi.h"
#include "common/midi_out.h"
#include "step-sequencer/patterns.h"

enum {
  channel = 9,
  clocksPerStep = 6,
  clocksPerQuarter = 24,
  clocksPerBar = 96,
  velocityNormal = 80,
  velocityAccent = 120,
};

static bool running;
static uint8_t chosen;
static uint8_t position;  ///< In clocks, 0 to 95.
static bool sounding[patternTracks];

static void noteOff(unsigned track) {
  if (sounding[track]) {
    midiSend(midiNoteOn | channel, trackNotes[track], 0);  // keeps running status
    sounding[track] = false;
  }
}

static void playStep(unsigned step) {
  const struct Pattern* pattern = &patterns[chosen];
  unsigned bit = 0x8000u >> step;
  uint8_t velocity = (pattern->accents & bit) != 0 ? velocityAccent : velocityNormal;
  for (unsigned track = 0; track < patternTracks; ++track) {
    noteOff(track);
    if ((pattern->steps[track] & bit) != 0) {
      midiSend(midiNoteOn | channel, trackNotes[track], velocity);
      sounding[track] = true;
    }
  }
}

void sequencerRun(bool run) {
  if (run == running) {
    return;
  }
  running = run;
  position = 0;
  midiSendRealTime(run ? midiStart : midiStop);
  for (unsigned track = 0; track < patternTracks; ++track) {
    noteOff(track);
  }
}

bool sequencerRuns(void) {
  return running;
}

bool sequencerBeat(void) {
  return running && position % clocksPerQuarter < clocksPerQuarter / 2;
}

void sequencerChoose(uint8_t pattern) {
  chosen = pattern % patternCount;
}

void sequencerClock(void) {
  midiSendRealTime(midiTimingClock);
  if (!running) {
    return;
  }
  unsigned step = position / clocksPerStep;
  unsigned startsAt = step % 2 == 1 ? patterns[chosen].swing : 0;
  if (position % clocksPerStep == startsAt) {
    playStep(step);
  }
  position = (uint8_t)(position + 1) % clocksPerBar;
}
