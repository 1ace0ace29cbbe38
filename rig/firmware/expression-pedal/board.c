#include "expression-pedal/board.h"

#include "chip/mk/pins.h"

#define SIM_SCGC6 REGISTER32(0x4004803Cu)
#define ADC0_SC1A REGISTER32(0x4003B000u)
#define ADC0_CFG1 REGISTER32(0x4003B008u)
#define ADC0_CFG2 REGISTER32(0x4003B00Cu)
#define ADC0_RA REGISTER32(0x4003B010u)
#define ADC0_SC3 REGISTER32(0x4003B024u)

enum {
  adcClockGate = 1 << 27,
  sc1Complete = 1 << 7,
  cfg1Divide2 = 1 << 5,  ///< Bus clock 16 MHz, converter 8 MHz.
  cfg1TwelveBits = 1 << 2,
  cfg2ChannelsB = 1 << 4,  ///< PTD1 is on the second set of channels, number 5.
  sc3MeanOf32 = 1 << 2 | 3,
  pedalChannel = 5,
  switchPin = 0,
  pedalPin = 1,
  lampPin = 5,
};

void boardStart(void) {
  portEnable(portC);
  portEnable(portD);
  pinSelect(portD, switchPin, pinGpio | pinPullUp);
  pinSelect(portD, pedalPin, pinAnalog);
  pinSelect(portC, lampPin, pinGpio);
  pinMakeOutput(portC, lampPin);
  SIM_SCGC6 |= adcClockGate;
  ADC0_CFG1 = cfg1Divide2 | cfg1TwelveBits;
  ADC0_CFG2 = cfg2ChannelsB;
  ADC0_SC3 = sc3MeanOf32;
}

uint16_t boardReadPedal(void) {
  ADC0_SC1A = pedalChannel;  // starts a conversion
  while ((ADC0_SC1A & sc1Complete) == 0) {
  }
  return (uint16_t)ADC0_RA;
}

bool boardSwitchClosed(void) {
  return pinRead(portD, switchPin) == 0;
}

void boardLamp(bool on) {
  pinWrite(portC, lampPin, on);
}
