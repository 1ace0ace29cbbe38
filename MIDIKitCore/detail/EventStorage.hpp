#pragma once

#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>

namespace midikit::core::detail {

/// Where the position of `T` among `Ts` is told at compile time.
template <class T, class... Ts>
consteval std::size_t positionOf() {
  std::size_t position = 0;
  static_cast<void>(((std::is_same_v<T, Ts> ? false : (++position, true)) && ...));
  return position;
}

/// Room for one of the records `Ts`, without knowing which one is there: its owner does. Nothing is
/// constructed, copied or destroyed by itself.
template <class... Ts>
union EventStorage {
  constexpr EventStorage() {}
  constexpr ~EventStorage() {}
};

template <class First, class... Rest>
union EventStorage<First, Rest...> {
  constexpr EventStorage() : none{} {}
  EventStorage(const EventStorage&) = delete;
  EventStorage& operator=(const EventStorage&) = delete;
  constexpr ~EventStorage() {}

  /// Begins the life of a `T`.
  template <class T, class... Arguments>
  constexpr void construct(Arguments&&... arguments) {
    if constexpr (std::is_same_v<T, First>) {
      std::construct_at(std::addressof(first), std::forward<Arguments>(arguments)...);
    } else {
      std::construct_at(std::addressof(rest));
      rest.template construct<T>(std::forward<Arguments>(arguments)...);
    }
  }

  /// The `T` that is there.
  template <class T>
  constexpr const T& get() const {
    if constexpr (std::is_same_v<T, First>) {
      return first;
    } else {
      return rest.template get<T>();
    }
  }
  template <class T>
  constexpr T& get() {
    return const_cast<T&>(std::as_const(*this).template get<T>());
  }

  struct None {};
  None none;
  First first;
  EventStorage<Rest...> rest;
};

}  // namespace midikit::core::detail
