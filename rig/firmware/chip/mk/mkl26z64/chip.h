#pragma once

/// What the shared code has to know of the mkl26z64 (Cortex-M0+).
enum {
  tickClockSource = 1 << 2,  ///< SysTick counts the core clock.
  tickClocksPerMillisecond = 16000,
  midiPortInterruptNumber = 12,  ///< UART0.
  uartHasSelectableClock = 1,    ///< UART0 has no clock until one is chosen.
  uartOverrunIsWrittenBack = 1,  ///< An overrun stops reception until its flag is written back.
};
