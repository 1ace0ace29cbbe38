#include "step-sequencer/tempo.h"

enum { slowest = 300, fastest = 3000, longestInterval = 2000, keptIntervals = 4 };

static uint16_t tenthsPerMinuteOf(uint32_t milliseconds) {
  if (milliseconds == 0) {
    return fastest;
  }
  uint32_t tenths = (600000u + milliseconds / 2) / milliseconds;
  if (tenths < slowest) {
    return slowest;
  }
  return tenths > fastest ? fastest : (uint16_t)tenths;
}

bool tempoTap(struct Tempo* tempo, uint32_t now) {
  uint32_t interval = now - tempo->lastTap;
  tempo->lastTap = now;
  if (tempo->taps == 0 || interval > longestInterval) {
    tempo->taps = 1;
    return false;
  }
  for (unsigned i = keptIntervals - 1; i > 0; --i) {
    tempo->intervals[i] = tempo->intervals[i - 1];
  }
  tempo->intervals[0] = interval;
  if (tempo->taps <= keptIntervals) {
    ++tempo->taps;
  }
  unsigned count = tempo->taps - 1u;
  uint32_t sum = 0;
  for (unsigned i = 0; i < count; ++i) {
    sum += tempo->intervals[i];
  }
  uint16_t previous = tempo->tenthsPerMinute;
  tempo->tenthsPerMinute = tenthsPerMinuteOf(sum / count);
  return tempo->tenthsPerMinute != previous;
}
