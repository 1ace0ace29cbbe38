#pragma once

#include <cstddef>
#include <functional>

namespace midikit::io {

/// Mixes one more hash in; the order counts.
inline void addToHash(std::size_t& seed, std::size_t hash) {
  constexpr std::size_t goldenRatio = 0x9E3779B9;  // Spreads small numbers over the bits.
  seed ^= hash + goldenRatio + (seed << 6U) + (seed >> 2U);
}

/// Mixes the count of a list or ordered set in, and then each element.
template <class List>
void addListToHash(std::size_t& seed, const List& list) {
  addToHash(seed, list.size());
  for (const auto& element : list) {
    addToHash(seed, std::hash<typename List::value_type>()(element));
  }
}

}  // namespace midikit::io
