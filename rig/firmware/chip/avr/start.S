// Vector table and start-up code of atmega32u4 (VECTOR_COUNT 43) and at90usb1286 (38).
// Labels of the linker script: stackTop, dataStart, dataEnd, dataImage (below 64 KiB), bssStart, bssEnd.

#define SPL 0x3D
#define SPH 0x3E
#define SREG 0x3F

// One table entry: the program's own handler of that number when it has one.
.macro vector number
    .weak __vector_\number
    .set __vector_\number, unusedInterrupt
    jmp __vector_\number
.endm

    .section .vectors, "ax", @progbits
    jmp start
    .altmacro
    .set number, 1
    .rept VECTOR_COUNT - 1
    vector %number
    .set number, number + 1
    .endr
    .noaltmacro

    .section .text.start, "ax", @progbits
    .global start
start:
    clr r1 // compiled code counts on a zero in r1
    out SREG, r1
    ldi r28, lo8(stackTop)
    ldi r29, hi8(stackTop)
    out SPH, r29
    out SPL, r28

// The compiler asks for these two by name in a program that has initialised or cleared variables.
    .global __do_copy_data
__do_copy_data:
    ldi r30, lo8(dataImage)
    ldi r31, hi8(dataImage)
    ldi r26, lo8(dataStart)
    ldi r27, hi8(dataStart)
    ldi r17, hi8(dataEnd)
    rjmp 2f
1:  lpm r0, Z+
    st X+, r0
2:  cpi r26, lo8(dataEnd)
    cpc r27, r17
    brne 1b

    .global __do_clear_bss
__do_clear_bss:
    ldi r26, lo8(bssStart)
    ldi r27, hi8(bssStart)
    ldi r17, hi8(bssEnd)
    rjmp 2f
1:  st X+, r1
2:  cpi r26, lo8(bssEnd)
    cpc r27, r17
    brne 1b

    call main

// Where main() would return to, and where an interrupt ends that nobody handles.
unusedInterrupt:
    cli
3:  rjmp 3b
