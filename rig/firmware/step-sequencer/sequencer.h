#pragma once

#include <stdbool.h>
#include <stdint.h>

/// Plays the chosen pattern to the MIDI port, on channel 10, and is the MIDI clock of whatever
/// listens. Main loop only.

/// Starts from the first step, or stops and silences what sounds.
void sequencerRun(bool run);

bool sequencerRuns(void);

/// True during the first half of each quarter note, while running.
bool sequencerBeat(void);

/// Chooses a pattern, 0 to 7, from the next step on.
void sequencerChoose(uint8_t pattern);

/// One MIDI clock has passed, of 24 to a quarter note. To be called while stopped as well.
void sequencerClock(void);
