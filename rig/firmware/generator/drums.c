/// Writes the sound bank of the rhythm box. Each sound is a tone whose pitch falls, noise, and a
/// decay for each of them.

#include <stdbool.h>

#include "generator/bytes.h"
#include "generator/sine.h"
#include "rhythm-box/sounds.h"

/// Pitches in Hz; levels 0 to 127; decays are times to fall to about a third, in milliseconds. What
/// is not named is 0: silent, or gone at once.
struct Recipe {
  int milliseconds;
  int startPitch, endPitch, pitchDecay;
  int secondPitch;  ///< A second, steady tone as loud as the first.
  int toneLevel, toneDecay;
  int noiseLevel, noiseDecay;
  bool noiseIsBright;  ///< Noise without its low half.
  int bursts;          ///< How often the noise starts, 12 ms apart; 0 and 1 mean once.
};

static const struct Recipe recipes[soundCount] = {
    [soundBassDrum] = {.milliseconds = 600,
                       .startPitch = 180,
                       .endPitch = 48,
                       .pitchDecay = 30,
                       .toneLevel = 120,
                       .toneDecay = 160,
                       .noiseLevel = 20,
                       .noiseDecay = 4,
                       .noiseIsBright = true},
    [soundSnare] = {.milliseconds = 450,
                    .startPitch = 240,
                    .endPitch = 180,
                    .pitchDecay = 20,
                    .secondPitch = 330,
                    .toneLevel = 40,
                    .toneDecay = 60,
                    .noiseLevel = 80,
                    .noiseDecay = 110,
                    .noiseIsBright = true},
    [soundClap] =
        {.milliseconds = 400, .noiseLevel = 110, .noiseDecay = 60, .noiseIsBright = true, .bursts = 3},
    [soundClosedHat] = {.milliseconds = 180, .noiseLevel = 90, .noiseDecay = 30, .noiseIsBright = true},
    [soundOpenHat] = {.milliseconds = 900, .noiseLevel = 90, .noiseDecay = 220, .noiseIsBright = true},
    [soundLowTom] = {.milliseconds = 800,
                     .startPitch = 140,
                     .endPitch = 85,
                     .pitchDecay = 60,
                     .toneLevel = 110,
                     .toneDecay = 200,
                     .noiseLevel = 14,
                     .noiseDecay = 20},
    [soundHighTom] = {.milliseconds = 600,
                      .startPitch = 230,
                      .endPitch = 150,
                      .pitchDecay = 50,
                      .toneLevel = 110,
                      .toneDecay = 150,
                      .noiseLevel = 14,
                      .noiseDecay = 20},
    [soundCrash] = {.milliseconds = 1800,
                    .startPitch = 3100,
                    .endPitch = 2900,
                    .pitchDecay = 100,
                    .secondPitch = 4270,
                    .toneLevel = 12,
                    .toneDecay = 300,
                    .noiseLevel = 100,
                    .noiseDecay = 380,
                    .noiseIsBright = true},
    [soundCowbell] = {.milliseconds = 450,
                      .startPitch = 845,
                      .endPitch = 845,
                      .secondPitch = 563,
                      .toneLevel = 56,
                      .toneDecay = 110},
};

enum { one = 1 << 16, burstMilliseconds = 12 };

static int samplesIn(int milliseconds) {
  return milliseconds * soundSampleRate / 1000;
}

/// What remains of `value` (times 65536) after one sample of a decay.
static int64_t decayed(int64_t value, int milliseconds) {
  return milliseconds == 0 ? 0 : value - value / samplesIn(milliseconds);
}

/// White noise, -128 to 127: Marsaglia's xorshift generator with the shifts 13, 17 and 5.
static int noise(uint32_t* state) {
  *state ^= *state << 13;
  *state ^= *state >> 17;
  *state ^= *state << 5;
  return (int)(*state >> 24) - 128;
}

static int tone(uint32_t phase) {  // 2^32 is one turn; -127 to 127
  return (int)((int64_t)sineOf(phase >> (32 - sineTurnLog2)) * 127 / sineOne);
}

/// Phase increment of a pitch that is given times 65536.
static uint32_t increment(int64_t pitch) {
  return (uint32_t)(pitch * (INT64_C(1) << 16) / soundSampleRate);
}

static void writeSound(FILE* file, const struct Recipe* recipe) {
  uint32_t noiseState = 0x2545F491, phase = 0, secondPhase = 0;  // the same for every sound
  int64_t toneLevel = one, noiseLevel = one;
  int64_t sweep = (int64_t)(recipe->startPitch - recipe->endPitch) * one;
  int lastNoise = 0;
  for (int i = 0; i < samplesIn(recipe->milliseconds); ++i) {
    int fresh = noise(&noiseState);
    int hiss = recipe->noiseIsBright ? (fresh - lastNoise) / 2 : fresh;
    lastNoise = fresh;
    int burst = i / samplesIn(burstMilliseconds);
    if (burst > 0 && burst < recipe->bursts && i % samplesIn(burstMilliseconds) == 0) {
      noiseLevel = one;
    }
    int pitched = tone(phase) + (recipe->secondPitch != 0 ? tone(secondPhase) : 0);
    int64_t sample =
        (pitched * recipe->toneLevel * toneLevel + hiss * recipe->noiseLevel * noiseLevel) / one / 127;
    sample = sample > 127 ? 127 : sample < -127 ? -127 : sample;
    writeLittleEndian(file, (uint32_t)sample, 1);
    phase += increment((int64_t)recipe->endPitch * one + sweep);
    secondPhase += increment((int64_t)recipe->secondPitch * one);
    sweep = decayed(sweep, recipe->pitchDecay);
    toneLevel = decayed(toneLevel, recipe->toneDecay);
    noiseLevel = decayed(noiseLevel, recipe->noiseDecay);
  }
}

int main(int argumentCount, char** arguments) {
  sinePrepare();
  FILE* file = outputOpen(argumentCount, arguments);
  uint32_t offset = 4 * (soundCount + 1);
  writeLittleEndian(file, offset, 4);
  for (int sound = 0; sound < soundCount; ++sound) {
    offset += (uint32_t)samplesIn(recipes[sound].milliseconds);
    writeLittleEndian(file, offset, 4);
  }
  for (int sound = 0; sound < soundCount; ++sound) {
    writeSound(file, &recipes[sound]);
  }
  return outputClose(file);
}
