/// First steps of the mk chips: watchdog off, then straight onto the 16 MHz crystal.
///
/// After reset the core runs on an internal oscillator that is off by a few per cent, too much for
/// a MIDI line. The crystal alone is fast enough for these programs, so the PLL stays off.

#include "chip/mk/chip_start.h"

#include "chip/cortex-m/startup.h"
#include "common/register.h"

#define MCG_C1 REGISTER8(0x40064000u)
#define MCG_C2 REGISTER8(0x40064001u)
#define MCG_S REGISTER8(0x40064006u)
#define OSC0_CR REGISTER8(0x40065000u)

enum {
  c1ClockExternal = 2 << 6,
  c1Divide512 = 4 << 3,  ///< Keeps the idle FLL's reference in its range, 31.25 to 39.0625 kHz.
  c2VeryHighRange = 2 << 4,
  c2Crystal = 1 << 2,
  c2LowPower = 1 << 1,  ///< Stops the FLL, once the crystal drives the core.
  sCrystalReady = 1 << 1,
  sClockMask = 3 << 2,
  sClockExternal = 2 << 2,
  oscEnable = 1 << 7,
  oscLoad10pF = 1 << 3 | 1 << 1,
};

void chipStart(void) {
  watchdogOff();
  OSC0_CR = oscEnable | oscLoad10pF;
  MCG_C2 = c2VeryHighRange | c2Crystal;
  MCG_C1 = c1ClockExternal | c1Divide512;
  while ((MCG_S & sCrystalReady) == 0) {
  }
  while ((MCG_S & sClockMask) != sClockExternal) {
  }
  MCG_C2 = c2VeryHighRange | c2Crystal | c2LowPower;
}
