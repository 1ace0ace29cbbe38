// Vector table of the imxrt1062: 160 external interrupts.
#include "chip/cortex-m/vectors.inc"

    systemVectors
    unused 25
    handler midiPortInterrupt // 25: LPUART6
    unused 96
    handler intervalTimerInterrupt // 122: PIT
    unused 37
