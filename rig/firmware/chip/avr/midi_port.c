/// The MIDI socket on USART1: receive on PD2, transmit on PD3.

#include "common/midi_port.h"

#include "chip/avr/avr.h"
#include "common/byte_queue.h"

enum {
  ucsraTransmitEmpty = 1 << 5,
  ucsrbReceiveInterrupt = 1 << 7,
  ucsrbReceiver = 1 << 4,
  ucsrbTransmitter = 1 << 3,
  ucsrcEightBits = 3 << 1,
  lineDivisor = 32,  ///< 16 MHz, 16 samples a bit, 31,250 baud.
};

static struct ByteQueue received;

INTERRUPT(midiPortInterrupt, 25);  // USART1 receive complete

void midiPortInterrupt(void) {
  byteQueuePut(&received, UDR1);
}

void midiPortStart(void) {
  UBRR1H = 0;
  UBRR1L = lineDivisor - 1;
  UCSR1A = 0;
  UCSR1C = ucsrcEightBits;
  UCSR1B = ucsrbReceiveInterrupt | ucsrbReceiver | ucsrbTransmitter;
  interruptsRelease();
}

void midiPortSend(uint8_t byte) {
  while ((UCSR1A & ucsraTransmitEmpty) == 0) {
  }
  UDR1 = byte;
}

bool midiPortReceive(uint8_t* byte) {
  return byteQueueTake(&received, byte);
}
