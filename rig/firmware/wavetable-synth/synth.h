#pragma once

#include <stdint.h>

/// Eight-voice wavetable synthesiser. The note calls are the main loop's; they hold off interrupts
/// while they change what `synthRender` reads.

enum { synthSampleRate = 48000, synthHighestNote = 118 };

/// Starts a note (0 to 118) on a free voice, or else on the one that has sounded longest. Velocity
/// 1 to 127.
void synthNoteOn(uint8_t note, uint8_t velocity);

/// Lets a note die away.
void synthNoteOff(uint8_t note);

/// Lets every note die away.
void synthAllNotesOff(void);

/// Pulse width of all voices: 0 is a square wave, 127 the narrowest pulse.
void synthSetWidth(uint8_t width);

/// The next sample of the mix. Timer interrupt.
int16_t synthRender(void);
