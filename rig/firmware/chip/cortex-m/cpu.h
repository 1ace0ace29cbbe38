#pragma once

#include "common/register.h"

/// Lets an external interrupt (its number as in the chip's vector list, from 0) reach the
/// processor.
static inline void interruptEnable(uint32_t number) {
  REGISTER32(0xE000E100u + 4u * (number / 32u)) = UINT32_C(1) << (number % 32u);
}

/// Holds off and lets in all interrupts, around data that a handler shares with the main loop.
static inline void interruptsHold(void) {
  __asm__ volatile("cpsid i" ::: "memory");
}
static inline void interruptsRelease(void) {
  __asm__ volatile("cpsie i" ::: "memory");
}
