#pragma once

#include "common/register.h"

/// Pins of the mk chips. Ports A to E are numbered 0 to 4.
enum { portB = 1, portC = 2, portD = 3 };

/// Bits of a pin's control register; its function is a number from 0 (analog) to 7, at bit 8.
enum { pinPullUp = 3, pinAnalog = 0 << 8, pinGpio = 1 << 8, pinFunction2 = 2 << 8, pinFunction3 = 3 << 8 };

/// Switches a port's clock on. Its registers can't be touched before.
static inline void portEnable(unsigned port) {
  REGISTER32(0x40048038u) |= UINT32_C(1) << (9 + port);  // SIM_SCGC5
}

/// Chooses a pin's function.
static inline void pinSelect(unsigned port, unsigned pin, uint32_t control) {
  REGISTER32(0x40049000u + 0x1000u * port + 4u * pin) = control;  // PORTx_PCRn
}

static inline void pinMakeOutput(unsigned port, unsigned pin) {
  REGISTER32(0x400FF014u + 0x40u * port) |= UINT32_C(1) << pin;  // GPIOx_PDDR
}

static inline void pinWrite(unsigned port, unsigned pin, uint32_t high) {
  uint32_t set = 0x400FF004u + 0x40u * port;  // GPIOx_PSOR, and GPIOx_PCOR next to it
  REGISTER32(high ? set : set + 4u) = UINT32_C(1) << pin;
}

static inline uint32_t pinRead(unsigned port, unsigned pin) {
  return REGISTER32(0x400FF010u + 0x40u * port) >> pin & 1u;  // GPIOx_PDIR
}
