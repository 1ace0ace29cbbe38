#pragma once

#include <stdbool.h>
#include <stdint.h>

/// One received message. Data bytes that the message does not have are 0.
struct MidiMessage {
  uint8_t status;
  uint8_t data1;
  uint8_t data2;
};

/// What has been read of the message under way. All zero at the start.
struct MidiReader {
  uint8_t status;  ///< Running status; 0 while data bytes belong to nothing that is wanted.
  uint8_t data1;
  bool hasData1;
};

/// Takes the next byte of the line. True when `message` now holds a complete channel or real-time
/// message. System exclusive and system common messages are passed over.
bool midiRead(struct MidiReader* reader, uint8_t byte, struct MidiMessage* message);
