#pragma once

#include "led-ring/ring.h"

/// The two-wire line (data on PTC6, clock on PTC5) through a chain of lights with their own
/// drivers.
void lightLineStart(void);

/// Sends one picture; takes about 0.3 ms.
void lightLineSend(const struct Light lights[ringLights]);
