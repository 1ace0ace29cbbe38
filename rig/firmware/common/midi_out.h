#pragma once

#include <stdint.h>

/// Writes MIDI messages to the board's MIDI port, with running status. Main loop only.

/// A channel message with two data bytes. `status` includes the channel; data bytes are 0 to 127.
void midiSend(uint8_t status, uint8_t data1, uint8_t data2);

/// A system real-time message, which leaves running status alone.
void midiSendRealTime(uint8_t status);
