#pragma once

#include <stdint.h>

/// Memory-mapped peripheral registers, by absolute address and width.
#define REGISTER8(address) (*(volatile uint8_t*)(address))
#define REGISTER16(address) (*(volatile uint16_t*)(address))
#define REGISTER32(address) (*(volatile uint32_t*)(address))
