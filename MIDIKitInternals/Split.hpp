#pragma once

#include <algorithm>
#include <cstddef>
#include <ranges>
#include <span>
#include <type_traits>
#include <vector>

#include "MIDIKitInternals/Exception.hpp"

namespace midikit::internals {

/// `collection` cut into consecutive pieces of `count` elements, of which the last may be shorter; no pieces
/// if it is empty. The pieces are views of the collection, which therefore can't be a temporary. A `count` of
/// 0 is a fault of the caller and stops the program.
template <std::ranges::contiguous_range Collection>
  requires std::ranges::borrowed_range<Collection> && std::ranges::sized_range<Collection>
auto split(Collection&& collection, std::size_t count) {
  using Piece = std::span<std::remove_reference_t<std::ranges::range_reference_t<Collection>>>;
  if (count == 0) {
    raise(Exception::divisionByZero, "A collection can't be split into pieces of 0 elements");
  }
  Piece rest(collection);
  std::vector<Piece> pieces;
  pieces.reserve(rest.size() / count + 1);
  while (!rest.empty()) {
    const auto size = std::min(count, rest.size());
    pieces.push_back(rest.first(size));
    rest = rest.subspan(size);
  }
  return pieces;
}

}  // namespace midikit::internals
