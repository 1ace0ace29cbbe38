/// The flash configuration field at 0x400, which the chip reads at reset.

#include <stdint.h>

struct FlashConfig {
  uint8_t backdoorKey[8];
  uint8_t protection[4];  ///< A clear bit write-protects one of 32 regions.
  uint8_t security;       ///< Two low bits "10": unsecured. Anything else locks the debug port.
  uint8_t option;
  uint8_t eepromProtection;
  uint8_t dataProtection;
};
_Static_assert(sizeof(struct FlashConfig) == 16, "the field is 16 bytes long");

extern const struct FlashConfig flashConfig;
__attribute__((section(".flash_config"), used)) const struct FlashConfig flashConfig = {
    .backdoorKey = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF},
    .protection = {0xFF, 0xFF, 0xFF, 0xFF},
    .security = 0xFE,
    .option = 0xFF,
    .eepromProtection = 0xFF,
    .dataProtection = 0xFF,
};
