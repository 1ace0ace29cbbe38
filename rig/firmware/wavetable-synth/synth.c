#include "wavetable-synth/synth.h"

#include <stdbool.h>

#include "chip/cortex-m/cpu.h"
#include "wavetable-synth/bank.h"

enum {
  voiceCount = 8,
  envelopeFull = 1 << 24,
  attackStep = envelopeFull / 240,  ///< 5 ms at 48 kHz.
  releaseShift = 12,                ///< Falls by 1/4096 a sample: to a third in 85 ms.
  topOctave = 9,
};

/// A voice is free when its envelope has come down to 0 with the key up.
struct Voice {
  uint32_t phase;  ///< 2^32 is one turn.
  uint32_t increment;
  uint32_t envelope;
  uint32_t age;  ///< Samples since the start of the note.
  uint8_t note;
  uint8_t level;
  uint8_t gain;  ///< 0 to 127.
  bool keyDown;
};

static struct Voice voices[voiceCount];
static volatile uint16_t widthPosition;  ///< Frame number times 256; at most the last but one.

/// Phase increments at 48 kHz of notes 108 to 119, the highest whole octave: 440 Hz is note 69.
static const uint32_t topIncrements[12] = {374557749, 396830112, 420426858, 445426740, 471913192, 499974611,
                                           529704648, 561202526, 594573365, 629928537, 667386037, 707070876};

/// The level with the most harmonics that all stay below half the sample rate.
static uint8_t levelFor(uint32_t increment) {
  uint8_t level = 0;
  while (level < bankLevels - 1 && (uint64_t)increment * (unsigned)(bankHarmonics >> level) >= UINT32_C(1)
                                                                                                   << 31) {
    ++level;
  }
  return level;
}

static struct Voice* voiceToUse(void) {
  struct Voice* oldest = &voices[0];
  for (unsigned i = 0; i < voiceCount; ++i) {
    if (voices[i].envelope == 0 && !voices[i].keyDown) {
      return &voices[i];
    }
    if (voices[i].age > oldest->age) {
      oldest = &voices[i];
    }
  }
  return oldest;
}

void synthNoteOn(uint8_t note, uint8_t velocity) {
  if (note > synthHighestNote) {
    return;
  }
  uint32_t increment = topIncrements[note % 12] >> (topOctave - note / 12);
  uint8_t level = levelFor(increment);
  interruptsHold();
  struct Voice* voice = voiceToUse();
  voice->increment = increment;
  voice->level = level;
  voice->note = note;
  voice->gain = (uint8_t)(velocity * velocity / 127);
  voice->age = 0;
  voice->keyDown = true;
  interruptsRelease();
}

void synthNoteOff(uint8_t note) {
  interruptsHold();
  for (unsigned i = 0; i < voiceCount; ++i) {
    if (voices[i].note == note) {
      voices[i].keyDown = false;
    }
  }
  interruptsRelease();
}

void synthAllNotesOff(void) {
  interruptsHold();
  for (unsigned i = 0; i < voiceCount; ++i) {
    voices[i].keyDown = false;
  }
  interruptsRelease();
}

void synthSetWidth(uint8_t width) {
  widthPosition = (uint16_t)(width * ((bankFrames - 1) * 256 - 1) / 127);
}

/// `part` of 2^bits of the way from a to b.
static int32_t between(int32_t a, int32_t b, int32_t part, int bits) {
  return a + (((b - a) * part) >> bits);
}

static int32_t frameAt(const int16_t* frame, uint32_t phase) {
  uint32_t index = phase >> (32 - bankSamplesLog2);
  int32_t within = (int32_t)(phase >> (32 - bankSamplesLog2 - 14) & 0x3FFF);
  return between(frame[index], frame[(index + 1) % bankSamples], within, 14);
}

static void moveEnvelope(struct Voice* voice) {
  if (!voice->keyDown) {
    voice->envelope -= (voice->envelope >> releaseShift) + (voice->envelope != 0);
  } else if (voice->envelope < envelopeFull) {
    uint32_t next = voice->envelope + attackStep;
    voice->envelope = next > envelopeFull ? envelopeFull : next;
  }
}

static int32_t renderVoice(struct Voice* voice, unsigned frame, int32_t withinFrame) {
  int32_t wide = frameAt(bank[voice->level][frame], voice->phase);
  int32_t narrow = frameAt(bank[voice->level][frame + 1], voice->phase);
  int32_t sample = between(wide, narrow, withinFrame, 8);
  voice->phase += voice->increment;
  ++voice->age;
  moveEnvelope(voice);
  int32_t loudness = (int32_t)(voice->envelope >> 9) * voice->gain / 127;  // 0 to 32768
  return (sample * loudness) >> 15;
}

int16_t synthRender(void) {
  unsigned frame = widthPosition >> 8;
  int32_t withinFrame = widthPosition & 0xFF;
  int32_t mix = 0;
  for (unsigned i = 0; i < voiceCount; ++i) {
    if (voices[i].envelope != 0 || voices[i].keyDown) {
      mix += renderVoice(&voices[i], frame, withinFrame);
    }
  }
  mix /= 4;  // eight full voices at once are rare, and then they may clip
  return (int16_t)(mix > INT16_MAX ? INT16_MAX : mix < INT16_MIN ? INT16_MIN : mix);
}
