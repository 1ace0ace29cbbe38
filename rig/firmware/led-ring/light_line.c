#include "led-ring/light_line.h"

#include "chip/mk/pins.h"

#define SIM_SCGC4 REGISTER32(0x40048034u)
#define SPI0_S REGISTER8(0x40076000u)
#define SPI0_BR REGISTER8(0x40076001u)
#define SPI0_C1 REGISTER8(0x40076003u)
#define SPI0_DL REGISTER8(0x40076006u)

enum {
  spiClockGate = 1 << 22,
  c1Enable = 1 << 6,
  c1Master = 1 << 4,
  brDivide2 = 0,  ///< Bus clock 8 MHz, line 4 MHz.
  sTransmitEmpty = 1 << 5,
  frameMark = 0xE0,  ///< Three ones, then the light's own five-bit dimmer.
  dimmerFull = 0x1F,
};

static void sendByte(uint8_t byte) {
  while ((SPI0_S & sTransmitEmpty) == 0) {
  }
  SPI0_DL = byte;
}

static void sendRepeated(uint8_t byte, unsigned count) {
  while (count-- > 0) {
    sendByte(byte);
  }
}

void lightLineStart(void) {
  SIM_SCGC4 |= spiClockGate;
  portEnable(portC);
  pinSelect(portC, 5, pinFunction2);
  pinSelect(portC, 6, pinFunction2);
  SPI0_BR = brDivide2;
  SPI0_C1 = c1Enable | c1Master;
}

void lightLineSend(const struct Light lights[ringLights]) {
  sendRepeated(0x00, 4);  // a frame of zeros starts a picture
  for (unsigned i = 0; i < ringLights; ++i) {
    sendByte(frameMark | dimmerFull);
    sendByte(lights[i].blue);
    sendByte(lights[i].green);
    sendByte(lights[i].red);
  }
  // Each light passes data on half a clock late, so the last one needs a clock more for every
  // second light; ones, because a zero frame would start a new picture.
  sendRepeated(0xFF, (ringLights / 2 + 7) / 8);
}
