#include "common/midi_out.h"

#include "common/midi_port.h"

/// The status byte that the receiver holds; 0 when it holds none.
static uint8_t runningStatus;

void midiSend(uint8_t status, uint8_t data1, uint8_t data2) {
  if (status != runningStatus) {
    runningStatus = status;
    midiPortSend(status);
  }
  midiPortSend(data1 & 0x7F);
  midiPortSend(data2 & 0x7F);
}

void midiSendRealTime(uint8_t status) {
  midiPortSend(status);
}
