/// The MIDI socket on LPUART6: transmit on GPIO_AD_B0_02, receive on GPIO_AD_B0_03.

#include "common/midi_port.h"

#include "chip.h"
#include "chip/cortex-m/cpu.h"
#include "chip/imxrt1062/pins.h"
#include "common/byte_queue.h"

#define LPUART6_BAUD REGISTER32(0x40198010u)
#define LPUART6_STAT REGISTER32(0x40198014u)
#define LPUART6_CTRL REGISTER32(0x40198018u)
#define LPUART6_DATA REGISTER32(0x4019801Cu)
#define LPUART6_RX_SELECT REGISTER32(0x401F8550u)
#define LPUART6_TX_SELECT REGISTER32(0x401F8554u)

enum {
  sixteenSamplesPerBit = 15 << 24,
  lineDivisor = 48,  ///< 24 MHz, 16 samples a bit, 31,250 baud.
  statTransmitEmpty = 1 << 23,
  statReceiveFull = 1 << 21,
  statOverrun = 1 << 19,
  ctrlReceiveInterrupt = 1 << 21,
  ctrlTransmitter = 1 << 19,
  ctrlReceiver = 1 << 18,
  gpioAdB0Pads = 1,  ///< Value of both select registers for the pads named above.
};

static struct ByteQueue received;

void midiPortInterrupt(void);

void midiPortInterrupt(void) {
  uint32_t status = LPUART6_STAT;
  if ((status & statOverrun) != 0) {
    LPUART6_STAT = statOverrun;  // reception stands still until it is written back
  }
  if ((status & statReceiveFull) != 0) {
    byteQueuePut(&received, (uint8_t)LPUART6_DATA);
  }
}

void midiPortStart(void) {
  clockGateOpen(3, 3);  // LPUART6
  padSelect(padAdB0_00 + 2, padFunction2, padDefault);
  padSelect(padAdB0_00 + 3, padFunction2, padPullUp);
  LPUART6_TX_SELECT = gpioAdB0Pads;
  LPUART6_RX_SELECT = gpioAdB0Pads;
  LPUART6_CTRL = 0;
  LPUART6_BAUD = sixteenSamplesPerBit | lineDivisor;
  LPUART6_CTRL = ctrlTransmitter | ctrlReceiver | ctrlReceiveInterrupt;
  interruptEnable(midiPortInterruptNumber);
}

void midiPortSend(uint8_t byte) {
  while ((LPUART6_STAT & statTransmitEmpty) == 0) {
  }
  LPUART6_DATA = byte;
}

bool midiPortReceive(uint8_t* byte) {
  return byteQueueTake(&received, byte);
}
