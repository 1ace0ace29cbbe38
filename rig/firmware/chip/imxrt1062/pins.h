#pragma once

#include "common/register.h"

/// Pads of the imxrt1062, counted from the first one in the order of their registers.
enum { padEmc00 = 0, padAdB0_00 = 42, padB0_00 = 74 };

/// Functions of a pad that are used here, and the electrical setting of an input with a 22 kohm
/// pull-up.
enum { padFunction2 = 2, padFunction3 = 3, padGpio = 5, padPullUp = 0x1F000, padDefault = 0x10B0 };

/// Chooses a pad's function and electrical setting.
static inline void padSelect(unsigned pad, uint32_t function, uint32_t setting) {
  REGISTER32(0x401F8014u + 4u * pad) = function;  // IOMUXC_SW_MUX_CTL_PAD_x
  REGISTER32(0x401F8204u + 4u * pad) = setting;   // IOMUXC_SW_PAD_CTL_PAD_x
}

/// Clock gates CCM_CCGR0 to CCM_CCGR6: switches one gate on, in all power modes.
static inline void clockGateOpen(unsigned reg, unsigned gate) {
  REGISTER32(0x400FC068u + 4u * reg) |= UINT32_C(3) << (2 * gate);
}
