#include "encoder-bank/encoder.h"

enum { edgesPerDetent = 4 };

/// Direction of each change of contacts, by old state times four plus new state. Jumps of two edges
/// at once have no direction and count as nothing.
static const int8_t directions[16] = {0, 1, -1, 0, -1, 0, 0, 1, 1, 0, 0, -1, 0, -1, 1, 0};

/// Steps for one detent, by the time since the one before.
static int8_t stepsAfter(uint8_t idleMilliseconds) {
  if (idleMilliseconds < 8) {
    return 8;
  }
  if (idleMilliseconds < 16) {
    return 4;
  }
  return idleMilliseconds < 32 ? 2 : 1;
}

int8_t encoderUpdate(struct Encoder* encoder, uint8_t contacts) {
  if (encoder->idle < UINT8_MAX) {
    ++encoder->idle;
  }
  encoder->edges = (int8_t)(encoder->edges + directions[encoder->contacts * 4 + contacts]);
  encoder->contacts = contacts;
  if (encoder->edges > -edgesPerDetent && encoder->edges < edgesPerDetent) {
    return 0;
  }
  int8_t steps = stepsAfter(encoder->idle);
  int8_t change = encoder->edges > 0 ? steps : (int8_t)-steps;
  encoder->edges = 0;
  encoder->idle = 0;
  return change;
}
