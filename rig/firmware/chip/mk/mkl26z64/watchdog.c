/// The watchdog of the mkl26z64, which is on after reset. Its control register can be written once.

#include "chip/mk/chip_start.h"
#include "common/register.h"

#define SIM_COPC REGISTER32(0x40048100u)

void watchdogOff(void) {
  SIM_COPC = 0;
}
