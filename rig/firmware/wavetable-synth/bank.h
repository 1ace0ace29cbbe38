#pragma once

#include <stdint.h>

/// The wavetable bank: pulse waves of 32 widths, each in nine versions with fewer and fewer
/// harmonics, so that no key makes a harmonic above half the sample rate. The generator of the bank
/// uses these too.
enum {
  bankLevels = 9,
  bankFrames = 32,
  bankSamplesLog2 = 11,
  bankSamples = 1 << bankSamplesLog2,
  bankHarmonics = 1023,  ///< On level 0; each further level has half of them.
};

extern const int16_t bank[bankLevels][bankFrames][bankSamples];
