// The drum sounds as the generator has written them. The bank begins in the first 64 KiB of flash and
// reaches beyond them.
    .section .bank, "a", @progbits
    .global bank
bank:
    .incbin "drums.bin"
