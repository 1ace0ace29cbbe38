// Vector table of the mk20dx256: 95 external interrupts.
#include "chip/cortex-m/vectors.inc"

    systemVectors
    unused 45
    handler midiPortInterrupt // 45: UART0 status
    unused 49
