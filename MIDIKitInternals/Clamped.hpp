#pragma once

#include <algorithm>
#include <concepts>
#include <type_traits>

namespace midikit::internals {

/// `value`, limited to `low` ... `high`, both included and `low` <= `high`. A value is given back, never a
/// reference to a bound that has gone.
template <std::integral Integer>
constexpr Integer clamped(Integer value, std::type_identity_t<Integer> low,
                          std::type_identity_t<Integer> high) {
  return std::max(low, std::min(value, high));
}

}  // namespace midikit::internals
