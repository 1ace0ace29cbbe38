/// First steps of the imxrt1062, on the clocks that the boot ROM leaves: watchdog off, vector table
/// in place, caches on (the program runs straight from serial flash), timers and UART on the 24 MHz
/// crystal.

#include <stdint.h>

#include "chip/cortex-m/startup.h"
#include "common/register.h"

#define SCB_VTOR REGISTER32(0xE000ED08u)
#define SCB_CCR REGISTER32(0xE000ED14u)
#define SCB_ICIALLU REGISTER32(0xE000EF50u)
#define SCB_DCISW REGISTER32(0xE000EF60u)
#define RTWDOG_CS REGISTER32(0x400BC000u)
#define RTWDOG_CNT REGISTER32(0x400BC004u)
#define RTWDOG_TOVAL REGISTER32(0x400BC008u)
#define CCM_CSCMR1 REGISTER32(0x400FC01Cu)
#define CCM_CSCDR1 REGISTER32(0x400FC024u)

enum {
  ccrDataCache = 1 << 16,
  ccrInstructionCache = 1 << 17,
  dataCacheWays = 4,
  dataCacheSets = 256,
  rtwdogEnable = 1 << 7,
  rtwdogMayChange = 1 << 5,
  timersOnCrystal = 1 << 6,
  timersDividerMask = 0x3F,
  uartOnCrystal = 1 << 6,
  uartDividerMask = 0x3F,
};

extern const uint32_t vectorTable[];

static void barrier(void) {
  __asm__ volatile("dsb\n\tisb" ::: "memory");
}

static void watchdogOff(void) {
  if ((RTWDOG_CS & rtwdogEnable) != 0) {
    RTWDOG_CNT = 0xD928C520;  // unlock
    RTWDOG_TOVAL = 0xFFFF;
    RTWDOG_CS = rtwdogMayChange;
  }
}

/// Cache contents are unknown after reset, so each cache is emptied before it is used.
static void cachesOn(void) {
  if ((SCB_CCR & ccrInstructionCache) == 0) {
    SCB_ICIALLU = 0;
    barrier();
    SCB_CCR |= ccrInstructionCache;
    barrier();
  }
  if ((SCB_CCR & ccrDataCache) == 0) {
    for (uint32_t way = 0; way < dataCacheWays; ++way) {
      for (uint32_t set = 0; set < dataCacheSets; ++set) {
        SCB_DCISW = way << 30 | set << 5;
      }
    }
    barrier();
    SCB_CCR |= ccrDataCache;
    barrier();
  }
}

void chipStart(void) {
  watchdogOff();
  SCB_VTOR = (uint32_t)vectorTable;
  cachesOn();
  CCM_CSCMR1 = (CCM_CSCMR1 & ~(uint32_t)timersDividerMask) | timersOnCrystal;
  CCM_CSCDR1 = (CCM_CSCDR1 & ~(uint32_t)uartDividerMask) | uartOnCrystal;
}
