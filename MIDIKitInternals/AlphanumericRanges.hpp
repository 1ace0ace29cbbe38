#pragma once

#include <span>

namespace midikit::internals {

/// A run of neighbouring Unicode scalars, `last` included.
struct AlphanumericRange {
  char32_t first;
  char32_t last;
};

/// All scalars of the general categories L*, M* and N* (letters, marks, numbers), ascending and without
/// overlap. The table is written by AlphanumericRanges.py, which stands beside it.
extern const std::span<const AlphanumericRange> alphanumericRanges;

}  // namespace midikit::internals
