#pragma once

/// The chip's own first steps: watchdogs off, clocks running. Called before .data and .bss are set
/// up, so it must not touch a variable of static storage.
void chipStart(void);
