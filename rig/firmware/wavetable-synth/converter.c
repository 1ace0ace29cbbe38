#include "wavetable-synth/converter.h"

#include "chip/imxrt1062/pins.h"

#define CCM_CBCMR REGISTER32(0x400FC018u)
#define LPSPI4_CR REGISTER32(0x403A0010u)
#define LPSPI4_CFGR1 REGISTER32(0x403A0024u)
#define LPSPI4_CCR REGISTER32(0x403A0040u)
#define LPSPI4_TCR REGISTER32(0x403A0060u)
#define LPSPI4_TDR REGISTER32(0x403A0064u)

#define CBCMR_SPI_DIVIDER_MASK (UINT32_C(7) << 26)
#define CBCMR_SPI_SOURCE_MASK (UINT32_C(3) << 4)
#define CBCMR_SPI_PLL2_BY_8 (UINT32_C(7) << 26 | UINT32_C(2) << 4)

enum {
  crEnable = 1 << 0,
  cfgr1Master = 1 << 0,
  ccrDivide6 = 4,  ///< 528 MHz / 8 / 6: 11 MHz on the line.
  tcrIgnoreInput = 1 << 19,
  tcrSixteenBits = 16 - 1,
};

void converterStart(void) {
  clockGateOpen(1, 3);  // LPSPI4
  CCM_CBCMR = (CCM_CBCMR & ~(CBCMR_SPI_DIVIDER_MASK | CBCMR_SPI_SOURCE_MASK)) | CBCMR_SPI_PLL2_BY_8;
  padSelect(padB0_00 + 0, padFunction3, padDefault);
  padSelect(padB0_00 + 2, padFunction3, padDefault);
  padSelect(padB0_00 + 3, padFunction3, padDefault);
  LPSPI4_CR = 0;
  LPSPI4_CFGR1 = cfgr1Master;
  LPSPI4_CCR = ccrDivide6;
  LPSPI4_CR = crEnable;
  LPSPI4_TCR = tcrIgnoreInput | tcrSixteenBits;
}

void converterWrite(int16_t sample) {
  LPSPI4_TDR = (uint16_t)sample ^ 0x8000u;
}
