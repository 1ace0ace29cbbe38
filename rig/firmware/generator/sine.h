#pragma once

#include <stdint.h>

/// Sine for the generators, in whole numbers only: a firmware image must not depend on the rounding
/// of the building machine's mathematics library.

enum { sineTurnLog2 = 11, sineTurn = 1 << sineTurnLog2, sineOne = 1 << 30 };

/// Fills the table that `sineOf` reads.
void sinePrepare(void);

/// Sine of `angle` / 2048 turns, times 2^30. Any angle.
int32_t sineOf(uint32_t angle);
