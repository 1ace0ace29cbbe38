/// The millisecond tick on timer 0: 16 MHz / 64 / 250.

#include "common/tick.h"

#include "chip/avr/avr.h"

static volatile uint8_t milliseconds;
static uint8_t taken;

INTERRUPT(tickInterrupt, 21);  // timer 0 compare match A

void tickInterrupt(void) {
  ++milliseconds;
}

void tickStart(void) {
  TCCR0A = 0x02;  // count to OCR0A, then start over
  OCR0A = 250 - 1;
  TIMSK0 = 0x02;
  TCCR0B = 0x03;  // clock / 64
  interruptsRelease();
}

bool tickElapsed(void) {
  if (taken == milliseconds) {
    return false;
  }
  ++taken;
  return true;
}
