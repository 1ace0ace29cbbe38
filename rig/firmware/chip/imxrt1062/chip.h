#pragma once

/// What the shared code has to know of the imxrt1062 (Cortex-M7).
enum {
  tickClockSource = 0,  ///< SysTick counts the chip's 100 kHz reference, which needs no set-up.
  tickClocksPerMillisecond = 100,
  midiPortInterruptNumber = 25,       ///< LPUART6.
  intervalTimerInterruptNumber = 122  ///< PIT.
};
