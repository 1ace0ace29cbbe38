// Vector table of the mkl26z64: 32 external interrupts.
#include "chip/cortex-m/vectors.inc"

    systemVectors
    unused 12
    handler midiPortInterrupt // 12: UART0
    unused 19
