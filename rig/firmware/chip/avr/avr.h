#pragma once

#include "common/register.h"

/// Registers of atmega32u4 and at90usb1286, which have the same addresses on both, and interrupts.
#define PINB REGISTER8(0x23)
#define DDRB REGISTER8(0x24)
#define PORTB REGISTER8(0x25)
#define PIND REGISTER8(0x29)
#define DDRD REGISTER8(0x2A)
#define PORTD REGISTER8(0x2B)
#define TCCR0A REGISTER8(0x44)
#define TCCR0B REGISTER8(0x45)
#define OCR0A REGISTER8(0x47)
#define RAMPZ REGISTER8(0x5B)
#define CLKPR REGISTER8(0x61)
#define TIMSK0 REGISTER8(0x6E)
#define TCCR1A REGISTER8(0x80)
#define TCCR1B REGISTER8(0x81)
#define OCR1AL REGISTER8(0x88)
#define OCR1AH REGISTER8(0x89)
#define UCSR1A REGISTER8(0xC8)
#define UCSR1B REGISTER8(0xC9)
#define UCSR1C REGISTER8(0xCA)
#define UBRR1L REGISTER8(0xCC)
#define UBRR1H REGISTER8(0xCD)
#define UDR1 REGISTER8(0xCE)

/// Declares an interrupt handler for a vector of the start-up code's table.
#define INTERRUPT(name, vector) void name(void) __asm__("__vector_" #vector) __attribute__((signal, used))

/// Runs the core at the crystal's full 16 MHz; a fuse may have it start at an eighth of that.
static inline void clockFullSpeed(void) {
  CLKPR = 0x80;  // unlocks the next write, for four clocks
  CLKPR = 0x00;
}

static inline void interruptsHold(void) {
  __asm__ volatile("cli" ::: "memory");
}
static inline void interruptsRelease(void) {
  __asm__ volatile("sei" ::: "memory");
}
