#pragma once

#include <stdbool.h>
#include <stdint.h>

/// The pedal's way from a converter reading (0 to 4095) to a controller value (0 to 127).
struct Pedal {
  uint16_t heel;  ///< Reading at the end that sends 0.
  uint16_t toe;   ///< Reading at the end that sends 127; above `heel`.
  uint16_t smoothed;
  uint8_t position;
  bool learning;
};

/// Takes one reading. True when `position` has changed.
bool pedalUpdate(struct Pedal* pedal, uint16_t reading);

/// Starts to learn the travel anew: until `pedalLearnEnd`, every reading widens the range.
void pedalLearnBegin(struct Pedal* pedal);

/// Ends learning. A travel too short to be meant restores the factory range.
void pedalLearnEnd(struct Pedal* pedal);
