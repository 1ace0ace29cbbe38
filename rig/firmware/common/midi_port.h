#pragma once

#include <stdbool.h>
#include <stdint.h>

/// The board's five-pin MIDI socket: an asynchronous serial line at 31,250 baud, eight data bits,
/// one stop bit. Each chip folder has its own implementation. Main loop only.

/// Sets up line speed and pins, and collects received bytes from then on.
void midiPortStart(void);

/// Sends one byte; waits while the transmitter is busy, at most 320 us.
void midiPortSend(uint8_t byte);

/// Takes the oldest received byte. False when there is none.
bool midiPortReceive(uint8_t* byte);
