#pragma once

#include <stdint.h>

/// One endless encoder with two contacts a quarter turn apart, four edges to a detent.
struct Encoder {
  uint8_t contacts;  ///< As last seen: bit 0 and bit 1.
  int8_t edges;      ///< Since the last detent.
  uint8_t idle;      ///< Milliseconds since the last detent, at most 255.
};

/// Takes the contacts' present state, every millisecond. Gives the change to send: 0 most of the
/// time, otherwise -8 to 8, more for a knob that is turned fast.
int8_t encoderUpdate(struct Encoder* encoder, uint8_t contacts);
