/// The periodic timer on channel 0 of the PIT.

#include "chip/imxrt1062/interval_timer.h"

#include "chip.h"
#include "chip/cortex-m/cpu.h"
#include "chip/imxrt1062/pins.h"

#define PIT_MCR REGISTER32(0x40084000u)
#define PIT_LDVAL0 REGISTER32(0x40084100u)
#define PIT_TCTRL0 REGISTER32(0x40084108u)
#define PIT_TFLG0 REGISTER32(0x4008410Cu)

enum { tctrlEnable = 1 << 0, tctrlInterrupt = 1 << 1, tflgPassed = 1 << 0 };

void intervalTimerInterrupt(void);

void intervalTimerInterrupt(void) {
  PIT_TFLG0 = tflgPassed;
  intervalPassed();
  // Without it the handler could return before the flag is clear on the slower bus, and run
  // twice.
  __asm__ volatile("dsb" ::: "memory");
}

void intervalTimerStart(uint32_t period) {
  clockGateOpen(1, 6);  // PIT
  PIT_MCR = 0;
  PIT_LDVAL0 = period - 1;
  PIT_TCTRL0 = tctrlEnable | tctrlInterrupt;
  interruptEnable(intervalTimerInterruptNumber);
}
