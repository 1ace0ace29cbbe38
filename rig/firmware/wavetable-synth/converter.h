#pragma once

#include <stdint.h>

/// The 16-bit digital-to-analog converter on LPSPI4: data on GPIO_B0_02, clock on GPIO_B0_03,
/// select on GPIO_B0_00. It takes offset binary, most significant bit first.
void converterStart(void);

/// Hands over one sample; the transfer takes 1.5 us and runs by itself.
void converterWrite(int16_t sample);
