#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <ranges>
#include <type_traits>

namespace midikit::core {

namespace detail {

/// Mixes one more hash in. The order counts. Both are spread over all bits, as most are small numbers.
constexpr std::uint64_t mixed(std::uint64_t hash, std::uint64_t next) {
  constexpr std::uint64_t spread = 0x9E3779B97F4A7C15;  // 2^64 divided by the golden ratio
  hash = (std::rotl(hash * spread, 31) ^ next) * spread;
  return hash ^ hash >> 32;
}

template <class Value>
std::uint64_t hashOfField(const Value& value) {
  return std::hash<Value>{}(value);
}

template <std::ranges::sized_range List>
  requires(!std::is_default_constructible_v<std::hash<List>>)
std::uint64_t hashOfField(const List& values) {
  std::uint64_t hash = values.size();
  for (const auto& value : values) {
    hash = mixed(hash, hashOfField(value));
  }
  return hash;
}

}  // namespace detail

/// One hash of all the values: each as its `std::hash` has it, a list or an ordered set element by element.
template <class... Values>
std::size_t hashOf(const Values&... values) {
  std::uint64_t hash = 0;
  ((hash = detail::mixed(hash, detail::hashOfField(values))), ...);
  return static_cast<std::size_t>(hash);
}

}  // namespace midikit::core
