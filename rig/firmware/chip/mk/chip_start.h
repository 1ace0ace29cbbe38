#pragma once

/// Turns the chip's watchdog off. Each chip of the family has its own.
void watchdogOff(void);
