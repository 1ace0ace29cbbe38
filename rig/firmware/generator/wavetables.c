/// Writes the wavetable bank of the synthesiser: band-limited pulse waves of falling width.
///
/// A pulse that is high for the fraction d of its period is the sum of cosines k = 1, 2, ... with
/// amplitudes sin(pi k d) / k. Frame f has d = (32 - f) / 64: half a period first, 1/64 last. Each
/// level takes half as many harmonics as the one before. All levels of a frame share one gain.

#include "generator/bytes.h"
#include "generator/sine.h"
#include "wavetable-synth/bank.h"

_Static_assert((int)bankSamples == (int)sineTurn, "one step of a wave is one step of the sine table");

enum { peak = 32000 };

static int64_t waves[bankLevels][bankSamples];

/// Amplitude of a harmonic, times 2^20.
static int64_t amplitude(int frame, int harmonic) {
  const uint32_t halfWidth = (uint32_t)(bankFrames - frame) * (sineTurn / 128);
  return sineOf((uint32_t)harmonic * halfWidth) / 1024 / harmonic;
}

static void addHarmonics(int frame, int level) {
  for (int k = 1; k <= bankHarmonics >> level; ++k) {
    int64_t factor = amplitude(frame, k);
    for (int i = 0; i < bankSamples; ++i) {
      int64_t cosine = sineOf((uint32_t)(k * i + sineTurn / 4));
      waves[level][i] += factor * cosine / sineOne;
    }
  }
}

static int64_t largest(void) {
  int64_t result = 1;
  for (int level = 0; level < bankLevels; ++level) {
    for (int i = 0; i < bankSamples; ++i) {
      int64_t value = waves[level][i];
      int64_t size = value < 0 ? -value : value;
      result = size > result ? size : result;
    }
  }
  return result;
}

static int16_t frames[bankLevels][bankFrames][bankSamples];

static void makeFrame(int frame) {
  for (int level = 0; level < bankLevels; ++level) {
    for (int i = 0; i < bankSamples; ++i) {
      waves[level][i] = 0;
    }
    addHarmonics(frame, level);
  }
  int64_t loudest = largest();
  for (int level = 0; level < bankLevels; ++level) {
    for (int i = 0; i < bankSamples; ++i) {
      frames[level][frame][i] = (int16_t)(waves[level][i] * peak / loudest);
    }
  }
}

int main(int argumentCount, char** arguments) {
  sinePrepare();
  FILE* file = outputOpen(argumentCount, arguments);
  for (int frame = 0; frame < bankFrames; ++frame) {
    makeFrame(frame);
  }
  for (int level = 0; level < bankLevels; ++level) {
    for (int frame = 0; frame < bankFrames; ++frame) {
      for (int i = 0; i < bankSamples; ++i) {
        writeLittleEndian(file, (uint32_t)frames[level][frame][i], 2);
      }
    }
  }
  return outputClose(file);
}
