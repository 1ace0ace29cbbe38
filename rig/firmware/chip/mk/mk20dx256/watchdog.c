/// The watchdog of the mk20dx256, which is on after reset.

#include "chip/mk/chip_start.h"
#include "common/register.h"

#define WDOG_STCTRLH REGISTER16(0x40052000u)
#define WDOG_UNLOCK REGISTER16(0x4005200Eu)

void watchdogOff(void) {
  // The two key words must be no more than 20 bus clocks apart, and the change must follow within
  // 256.
  WDOG_UNLOCK = 0xC520;
  WDOG_UNLOCK = 0xD928;
  __asm__ volatile("nop\n\tnop");  // the unlock takes effect one bus clock later
  WDOG_STCTRLH = 0x01D2;           // the reset value without its enable bit
}
