#pragma once

#include <stdbool.h>
#include <stdint.h>

/// The pedal box: a potentiometer on PTD1, a footswitch to ground on PTD0, a lamp on PTC5.

/// Sets up pins and converter.
void boardStart(void);

/// Position of the potentiometer, 0 to 4095: the converter's mean of 32 conversions, done within
/// 0.3 ms.
uint16_t boardReadPedal(void);

/// True while the footswitch is down. Not debounced.
bool boardSwitchClosed(void);

void boardLamp(bool on);
