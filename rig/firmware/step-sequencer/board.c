#include "step-sequencer/board.h"

#include "chip/imxrt1062/pins.h"

#define GPIO2_GDIR REGISTER32(0x401BC004u)
#define GPIO2_SET REGISTER32(0x401BC084u)
#define GPIO2_CLEAR REGISTER32(0x401BC088u)
#define GPIO4_PSR REGISTER32(0x401C4008u)

enum { runBit = 1 << 4, tapBit = 1 << 5, lampBit = 1 << 3 };

void boardStart(void) {
  clockGateOpen(0, 15);  // GPIO2
  clockGateOpen(3, 6);   // GPIO4
  padSelect(padEmc00 + 4, padGpio, padPullUp);
  padSelect(padEmc00 + 5, padGpio, padPullUp);
  padSelect(padB0_00 + 3, padGpio, padDefault);
  GPIO2_GDIR |= lampBit;
}

bool boardRunButton(void) {
  return (GPIO4_PSR & runBit) == 0;
}

bool boardTapButton(void) {
  return (GPIO4_PSR & tapBit) == 0;
}

void boardLamp(bool on) {
  if (on) {
    GPIO2_SET = lampBit;
  } else {
    GPIO2_CLEAR = lampBit;
  }
}
