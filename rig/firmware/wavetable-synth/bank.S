// The wavetable bank as the generator has written it: 16-bit samples, little-endian.
    .section .bank, "a", %progbits
    .balign 32
    .global bank
    .type bank, %object
bank:
    .incbin "wavetables.bin"
    .size bank, . - bank
