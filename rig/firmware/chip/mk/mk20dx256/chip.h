#pragma once

/// What the shared code has to know of the mk20dx256 (Cortex-M4).
enum {
  tickClockSource = 1 << 2,  ///< SysTick counts the core clock.
  tickClocksPerMillisecond = 16000,
  midiPortInterruptNumber = 45,  ///< UART0 status.
  uartHasSelectableClock = 0,    ///< UART0 runs on the core clock.
  uartOverrunIsWrittenBack = 0,  ///< Reading status, then data, clears an overrun.
};
