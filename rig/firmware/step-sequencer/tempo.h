#pragma once

#include <stdbool.h>
#include <stdint.h>

/// Tap tempo: the mean of the last taps. Times are milliseconds since start.
struct Tempo {
  uint32_t lastTap;
  uint32_t intervals[4];  ///< Between taps, the newest first; `taps` - 1 of them are valid, at most 4.
  uint8_t taps;
  uint16_t tenthsPerMinute;  ///< Quarter notes per minute, times ten: 300 to 3000.
};

/// A tap at `now`. True when the tempo has changed. A pause of more than two seconds starts over.
bool tempoTap(struct Tempo* tempo, uint32_t now);
