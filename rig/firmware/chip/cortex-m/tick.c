/// The millisecond tick on the processor's SysTick timer (registers of the ARM architecture).

#include "common/tick.h"

#include "chip.h"
#include "common/register.h"

#define SYST_CSR REGISTER32(0xE000E010u)
#define SYST_RVR REGISTER32(0xE000E014u)
#define SYST_CVR REGISTER32(0xE000E018u)

enum { csrEnable = 1 << 0, csrInterrupt = 1 << 1 };

static volatile uint8_t milliseconds;
static uint8_t taken;

void tickInterrupt(void);

void tickInterrupt(void) {
  ++milliseconds;
}

void tickStart(void) {
  SYST_RVR = tickClocksPerMillisecond - 1;
  SYST_CVR = 0;
  SYST_CSR = (uint32_t)(csrEnable | csrInterrupt | tickClockSource);
}

bool tickElapsed(void) {
  if (taken == milliseconds) {
    return false;
  }
  ++taken;
  return true;
}
