#pragma once

/// The sounds in the bank, in its order. The generator of the bank uses these too.
enum Sound {
  soundBassDrum,
  soundSnare,
  soundClap,
  soundClosedHat,
  soundOpenHat,
  soundLowTom,
  soundHighTom,
  soundCrash,
  soundCowbell,
  soundCount,
};

/// The bank is `soundCount` + 1 offsets from its beginning, 32 bits each, little-endian, then
/// signed 8-bit samples at this rate. Sound i goes from offset i to offset i + 1.
enum { soundSampleRate = 16000 };
