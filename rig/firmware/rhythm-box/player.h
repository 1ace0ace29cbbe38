#pragma once

#include <stdint.h>

#include "rhythm-box/sounds.h"

/// Plays sounds of the bank on four voices, as pulse width modulation on PB5 (a low-pass filter
/// follows).

/// Starts the output. Interrupts must still be off.
void playerStart(void);

/// Starts a sound on the voice that has least left to play. Velocity 1 to 127. Main loop only.
void playerTrigger(enum Sound sound, uint8_t velocity);

/// Stops a sound wherever it plays: the closing pedal of a hi-hat. Main loop only.
void playerChoke(enum Sound sound);
