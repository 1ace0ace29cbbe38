/// What the boot ROM of the imxrt1062 reads before it starts a program from serial flash: the
/// FlexSPI configuration block at the start of the flash, and 4 KiB on the image vector table.

#include <stddef.h>
#include <stdint.h>

/// Instructions of the FlexSPI sequencer, two to a word: an operation, a number of data lines
/// (coded 0 for one and 2 for four) and an operand.
#define STEP(operation, lines, operand) \
  ((uint32_t)(operation) << 10 | (uint32_t)(lines) << 8 | (uint32_t)(operand))
#define STEPS(first, second) (STEP first | STEP second << 16)

enum {
  stepCommand = 0x01,
  stepAddress = 0x02,
  stepRead = 0x09,
  stepDummy = 0x0C,
};
enum { oneLine = 0, fourLines = 2 };

/// Rows of four words in the sequencer's table, at the places where the ROM looks for them.
enum { sequenceRead = 4 * 0, sequenceReadStatus = 4 * 1, sequenceWriteEnable = 4 * 3 };

struct FlexSpiConfig {
  uint32_t tag;
  uint32_t version;
  uint32_t reserved0;
  uint8_t readSampleClock;  ///< 1: the strobe that is looped back from the DQS pad.
  uint8_t chipSelectHold;   ///< In serial clocks, as is the set-up time.
  uint8_t chipSelectSetup;
  uint8_t unused0[0x40 - 0x0F];
  uint32_t controllerOptions;
  uint8_t deviceType;  ///< 1: serial NOR flash.
  uint8_t dataLines;
  uint8_t serialClock;  ///< 6: 100 MHz.
  uint8_t unused1[0x50 - 0x47];
  uint32_t flashBytes;  ///< Size of the flash chip on select line A1.
  uint8_t unused2[0x80 - 0x54];
  uint32_t sequences[64];
  uint8_t unused3[0x1C0 - 0x180];
  uint32_t pageBytes;
  uint32_t sectorBytes;
  uint8_t unused4[0x200 - 0x1C8];
};
_Static_assert(offsetof(struct FlexSpiConfig, controllerOptions) == 0x40, "place fixed by the ROM");
_Static_assert(offsetof(struct FlexSpiConfig, flashBytes) == 0x50, "place fixed by the ROM");
_Static_assert(offsetof(struct FlexSpiConfig, sequences) == 0x80, "place fixed by the ROM");
_Static_assert(offsetof(struct FlexSpiConfig, pageBytes) == 0x1C0, "place fixed by the ROM");
_Static_assert(sizeof(struct FlexSpiConfig) == 0x200, "size fixed by the ROM");

/// Values of the linker script. Of the two sizes, the "address" is the number itself.
extern const char flashChipBytes[], imageStart[], imageBytes[];
extern const uint32_t vectorTable[];

extern const struct FlexSpiConfig flexSpiConfig;
__attribute__((section(".flash_config"), used)) const struct FlexSpiConfig flexSpiConfig = {
    .tag = 0x42464346,  // "FCFB"
    .version = 0x56010000,
    .readSampleClock = 1,
    .chipSelectHold = 3,
    .chipSelectSetup = 3,
    .deviceType = 1,
    .dataLines = 4,
    .serialClock = 6,
    .flashBytes = (uint32_t)flashChipBytes,
    .sequences =
        {
            // Fast read on four lines: a 24-bit address, then six clocks of mode and waiting.
            [sequenceRead] = STEPS((stepCommand, oneLine, 0xEB), (stepAddress, fourLines, 24)),
            [sequenceRead + 1] = STEPS((stepDummy, fourLines, 6), (stepRead, fourLines, 4)),
            [sequenceReadStatus] = STEPS((stepCommand, oneLine, 0x05), (stepRead, oneLine, 4)),
            [sequenceWriteEnable] = STEPS((stepCommand, oneLine, 0x06), (0, 0, 0)),
        },
    .pageBytes = 256,
    .sectorBytes = 4096,
};

struct BootData {
  uint32_t start;
  uint32_t length;
  uint32_t isPlugin;
};

struct ImageVectorTable {
  uint32_t header;  ///< Tag 0xD1, length 32 (big-endian), version 0x43.
  uint32_t entry;   ///< The vector table: the ROM loads stack pointer and reset vector from it.
  uint32_t reserved1;
  uint32_t deviceConfig;  ///< 0: the ROM has no registers to set for us.
  uint32_t bootData;
  uint32_t self;
  uint32_t commandSequence;  ///< 0: not signed.
  uint32_t reserved2;
};
_Static_assert(sizeof(struct ImageVectorTable) == 32, "the header says 32");

extern const struct BootData bootData;
__attribute__((section(".boot.data"), used)) const struct BootData bootData = {
    .start = (uint32_t)imageStart,
    .length = (uint32_t)imageBytes,
    .isPlugin = 0,
};

extern const struct ImageVectorTable imageVectorTable;
__attribute__((section(".boot.ivt"), used)) const struct ImageVectorTable imageVectorTable = {
    .header = 0x432000D1,
    .entry = (uint32_t)vectorTable,
    .bootData = (uint32_t)&bootData,
    .self = (uint32_t)&imageVectorTable,
};
