#include "expression-pedal/pedal.h"

enum {
  factoryHeel = 160,
  factoryToe = 3900,
  shortestTravel = 400,
  smoothing = 8,  ///< One reading counts for an eighth.
  deadBand = 12,  ///< A step must be this far inside, so that the value does not flicker.
  curveSteps = 16,
  fullTravel = 256 * curveSteps,
};

/// Loudness curve: slow at the heel, so that swells start softly. The value at each sixteenth of
/// travel.
static const uint8_t curve[curveSteps + 1] = {0,  1,  3,  6,  10, 15,  22,  30, 39,
                                              49, 60, 71, 83, 95, 107, 118, 127};

static uint8_t curveAt(uint16_t travel) {
  unsigned step = travel / 256u;
  if (step == curveSteps) {
    return curve[curveSteps];
  }
  unsigned within = travel % 256u;
  unsigned low = curve[step];
  unsigned high = curve[step + 1];
  return (uint8_t)(low + (high - low) * within / 256u);
}

/// How far the pedal is down, 0 to `fullTravel`.
static uint16_t travelOf(const struct Pedal* pedal, uint16_t reading) {
  if (reading <= pedal->heel) {
    return 0;
  }
  if (reading >= pedal->toe) {
    return fullTravel;
  }
  uint32_t span = (uint32_t)pedal->toe - pedal->heel;
  return (uint16_t)(((uint32_t)reading - pedal->heel) * fullTravel / span);
}

static void widen(struct Pedal* pedal) {
  if (pedal->smoothed < pedal->heel) {
    pedal->heel = pedal->smoothed;
  }
  if (pedal->smoothed > pedal->toe) {
    pedal->toe = pedal->smoothed;
  }
}

bool pedalUpdate(struct Pedal* pedal, uint16_t reading) {
  int difference = (int)reading - (int)pedal->smoothed;
  if (difference > deadBand || difference < -deadBand) {
    pedal->smoothed = (uint16_t)((int)pedal->smoothed + difference / smoothing);
  }
  if (pedal->learning) {
    widen(pedal);
    return false;
  }
  uint8_t position = curveAt(travelOf(pedal, pedal->smoothed));
  bool changed = position != pedal->position;
  pedal->position = position;
  return changed;
}

void pedalLearnBegin(struct Pedal* pedal) {
  pedal->learning = true;
  pedal->heel = pedal->smoothed;
  pedal->toe = pedal->smoothed;
}

void pedalLearnEnd(struct Pedal* pedal) {
  pedal->learning = false;
  if (pedal->toe - pedal->heel < shortestTravel) {
    pedal->heel = factoryHeel;
    pedal->toe = factoryToe;
  }
}
