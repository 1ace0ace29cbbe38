#include "rhythm-box/player.h"

#include "chip/avr/avr.h"

enum { voiceCount = 4, silence = 128 };

struct Voice {
  uint32_t position;  ///< Flash address of the next sample; at `end` the voice is silent.
  uint32_t end;
  uint8_t gain;  ///< 0 to 127.
  uint8_t sound;
};

extern const uint8_t bank[];  // a flash address, not to be read through this pointer

static struct Voice voices[voiceCount];

/// A byte of flash beyond the reach of a 16-bit pointer. RAMPZ, the upper address byte, is shared,
/// so the main loop calls this with interrupts held off only.
static inline uint8_t flashByte(uint32_t address) {
  uint8_t value;
  RAMPZ = (uint8_t)(address >> 16);
  __asm__ volatile("elpm %0, Z" : "=r"(value) : "z"((uint16_t)address));
  return value;
}

/// Flash address of a sound's first sample.
static uint32_t soundAddress(uint8_t sound) {
  uint32_t entry = (uint16_t)bank + 4u * sound;
  uint32_t offset = 0;
  for (uint8_t i = 4; i-- > 0;) {
    offset = offset << 8 | flashByte(entry + i);
  }
  return (uint16_t)bank + offset;
}

void playerStart(void) {
  DDRB |= 1 << 5;
  OCR1AH = 0;
  OCR1AL = silence;
  TCCR1A = 0x81;  // eight-bit fast PWM, 62.5 kHz
  TCCR1B = 0x09;
  TCCR0A = 0x02;  // count to OCR0A, then start over: 16 MHz / 8 / 125 is the sample rate
  OCR0A = 125 - 1;
  TIMSK0 = 0x02;
  TCCR0B = 0x02;
}

void playerTrigger(enum Sound sound, uint8_t velocity) {
  interruptsHold();
  struct Voice* voice = &voices[0];
  for (uint8_t i = 1; i < voiceCount; ++i) {
    if (voices[i].end - voices[i].position < voice->end - voice->position) {
      voice = &voices[i];
    }
  }
  voice->position = soundAddress(sound);
  voice->end = soundAddress(sound + 1);
  voice->gain = velocity;
  voice->sound = sound;
  interruptsRelease();
}

void playerChoke(enum Sound sound) {
  interruptsHold();
  for (uint8_t i = 0; i < voiceCount; ++i) {
    if (voices[i].sound == sound) {
      voices[i].position = voices[i].end;
    }
  }
  interruptsRelease();
}

INTERRUPT(sampleInterrupt, 21);  // timer 0 compare match A

void sampleInterrupt(void) {
  int16_t mix = 0;
  for (struct Voice* voice = voices; voice < voices + voiceCount; ++voice) {
    if (voice->position != voice->end) {
      int8_t sample = (int8_t)flashByte(voice->position++);
      mix = (int16_t)(mix + (sample * voice->gain) / 128);
    }
  }
  mix = (int16_t)(mix / 2 + silence);
  OCR1AL = (uint8_t)(mix < 0 ? 0 : mix > 255 ? 255 : mix);
}
