#pragma once

#include <stdint.h>

enum { intervalTimerHz = 24000000 };

/// Starts the periodic timer; `period` in clocks of 24 MHz, at least 2. Called again, it changes
/// the period from the end of the running interval on, so that no beat comes early.
void intervalTimerStart(uint32_t period);

/// Given by the program: called in the timer's interrupt, once for each interval.
void intervalPassed(void);
