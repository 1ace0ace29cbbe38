#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <type_traits>
#include <utility>
#include <variant>

namespace midikit::internals {

/// What an operation gave: its value, or the error that stands in for it. Converts from either, so that a
/// function returns the one or the other as it is. Asking for the alternative that isn't there is a fault of
/// the caller and stops the program (`std::abort`); nothing is ever thrown. A plain value.
template <class T, class E>
class [[nodiscard]] Result {
  static_assert(!std::is_same_v<T, E>, "value and error must be told apart by their types");

 public:
  using value_type = T;
  using error_type = E;

  constexpr Result(const T& value) : alternatives_(std::in_place_index<0>, value) {}
  constexpr Result(T&& value) : alternatives_(std::in_place_index<0>, std::move(value)) {}
  constexpr Result(const E& error) : alternatives_(std::in_place_index<1>, error) {}
  constexpr Result(E&& error) : alternatives_(std::in_place_index<1>, std::move(error)) {}

  constexpr bool hasValue() const noexcept { return alternatives_.index() == 0; }
  constexpr explicit operator bool() const noexcept { return hasValue(); }

  constexpr T& value() & { return alternative<0>(*this); }
  constexpr const T& value() const& { return alternative<0>(*this); }
  constexpr T&& value() && { return std::move(alternative<0>(*this)); }

  constexpr E& error() & { return alternative<1>(*this); }
  constexpr const E& error() const& { return alternative<1>(*this); }
  constexpr E&& error() && { return std::move(alternative<1>(*this)); }

  constexpr T& operator*() & { return value(); }
  constexpr const T& operator*() const& { return value(); }
  constexpr T&& operator*() && { return std::move(*this).value(); }
  constexpr T* operator->() { return std::addressof(value()); }
  constexpr const T* operator->() const { return std::addressof(value()); }

  constexpr friend bool operator==(const Result&, const Result&) = default;

 private:
  template <std::size_t Index, class Self>
  static constexpr auto& alternative(Self& self) {
    if (self.alternatives_.index() != Index) {
      std::abort();
    }
    return std::get<Index>(self.alternatives_);
  }

  std::variant<T, E> alternatives_;
};

}  // namespace midikit::internals
