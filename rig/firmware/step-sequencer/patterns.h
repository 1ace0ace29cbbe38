#pragma once

#include <stdint.h>

enum { patternCount = 8, patternTracks = 4, patternSteps = 16 };

/// One bar of sixteenths. Bit 15 of a mask is the first step, so that a mask reads from left to
/// right.
struct Pattern {
  uint16_t steps[patternTracks];
  uint16_t accents;  ///< Steps that are played louder, on every track.
  uint8_t swing;     ///< Delay of every second step, in clocks (24 to a quarter note): 0 to 3.
};

extern const struct Pattern patterns[patternCount];

/// The note of each track, of the percussion map: bass drum, snare, closed and open hi-hat.
extern const uint8_t trackNotes[patternTracks];
