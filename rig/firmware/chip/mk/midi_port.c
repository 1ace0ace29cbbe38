/// The MIDI socket on UART0: receive on PTB16, transmit on PTB17.

#include "common/midi_port.h"

#include "chip.h"
#include "chip/cortex-m/cpu.h"
#include "chip/mk/pins.h"
#include "common/byte_queue.h"

#define SIM_SOPT2 REGISTER32(0x40048004u)
#define SIM_SCGC4 REGISTER32(0x40048034u)
#define UART0_BDH REGISTER8(0x4006A000u)
#define UART0_BDL REGISTER8(0x4006A001u)
#define UART0_C2 REGISTER8(0x4006A003u)
#define UART0_S1 REGISTER8(0x4006A004u)
#define UART0_D REGISTER8(0x4006A007u)

enum {
  c2ReceiveInterrupt = 1 << 5,
  c2Transmitter = 1 << 3,
  c2Receiver = 1 << 2,
  s1TransmitEmpty = 1 << 7,
  s1ReceiveFull = 1 << 5,
  s1Overrun = 1 << 3,
  uartClockGate = 1 << 10,
  uartClockCrystal = 2 << 26,
  lineDivisor = 32,  ///< 16 MHz, 16 samples a bit, 31,250 baud.
};

static struct ByteQueue received;

void midiPortInterrupt(void);

void midiPortInterrupt(void) {
  uint8_t status = UART0_S1;
  if (uartOverrunIsWrittenBack && (status & s1Overrun) != 0) {
    UART0_S1 = s1Overrun;
  }
  if ((status & (s1ReceiveFull | s1Overrun)) != 0) {
    byteQueuePut(&received, UART0_D);
  }
}

void midiPortStart(void) {
  if (uartHasSelectableClock) {
    SIM_SOPT2 |= uartClockCrystal;
  }
  SIM_SCGC4 |= uartClockGate;
  portEnable(portB);
  pinSelect(portB, 16, pinFunction3);
  pinSelect(portB, 17, pinFunction3);
  UART0_BDH = 0;
  UART0_BDL = lineDivisor;
  UART0_C2 = c2Transmitter | c2Receiver | c2ReceiveInterrupt;
  interruptEnable(midiPortInterruptNumber);
}

void midiPortSend(uint8_t byte) {
  while ((UART0_S1 & s1TransmitEmpty) == 0) {
  }
  UART0_D = byte;
}

bool midiPortReceive(uint8_t* byte) {
  return byteQueueTake(&received, byte);
}
