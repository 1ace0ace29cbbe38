#pragma once

#include <stdbool.h>

/// Starts the chip's millisecond timer. Call once, before the main loop.
void tickStart(void);

/// True once for every millisecond that has passed. A loop that falls behind catches up, as long as
/// it stays less than 256 ms late.
bool tickElapsed(void);
