#pragma once

#include <stdbool.h>

/// The sequencer's panel: two buttons to ground on GPIO_EMC_04 and GPIO_EMC_05, a lamp on
/// GPIO_B0_03.

void boardStart(void);

/// True while the button is down. Not debounced.
bool boardRunButton(void);
bool boardTapButton(void);

void boardLamp(bool on);
