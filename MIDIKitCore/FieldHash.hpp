#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace midikit::core::detail {

/// One hash of all the values, each as its `std::hash` has it.
template <class... Values>
std::size_t hashOf(const Values&... values) {
  std::uint64_t hash = 0;
  // The multiplier is 2^64 divided by the golden ratio.
  ((hash = (hash ^ std::hash<Values>{}(values)) * 0x9E3779B97F4A7C15U, hash ^= hash >> 32), ...);
  return static_cast<std::size_t>(hash);
}

}  // namespace midikit::core::detail
