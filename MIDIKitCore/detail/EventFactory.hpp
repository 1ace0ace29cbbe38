#pragma once

#include <concepts>
#include <type_traits>
#include <utility>

#include "MIDIKitCore/ParseError.hpp"
#include "MIDIKitInternals/Result.hpp"

namespace midikit::core::detail {

/// Makes the event of one case. Takes what a constructor of the record takes, and what only its `make` takes
/// if it has one: then it gives a `Result` with the event, or with the error that `make` gave.
template <class Event, class Record>
struct EventFactory {
  template <class... Fields>
    requires std::constructible_from<Record, Fields...>
  constexpr Event operator()(Fields&&... fields) const {
    return Event(Record(std::forward<Fields>(fields)...));
  }

  template <class... Fields>
    requires(!std::constructible_from<Record, Fields...>) &&
            requires(Fields&&... fields) { Record::make(std::forward<Fields>(fields)...); }
  internals::Result<Event, ParseError> operator()(Fields&&... fields) const {
    auto record = Record::make(std::forward<Fields>(fields)...);
    if (!record) {
      return record.error();
    }
    return Event(std::move(*record));
  }
};

/// Several callables as one.
template <class... Handlers>
struct Overloaded : Handlers... {
  using Handlers::operator()...;
};

/// One visitor is called where it is.
template <class Visitor>
constexpr Visitor&& visitorOf(Visitor&& visitor) {
  return std::forward<Visitor>(visitor);
}

/// Several handlers become one visitor, into which they are moved.
template <class... Handlers>
  requires(sizeof...(Handlers) > 1)
constexpr auto visitorOf(Handlers&&... handlers) {
  static_assert(
      ((!std::is_lvalue_reference_v<Handlers> || std::is_empty_v<std::decay_t<Handlers>>) && ...),
      "a handler with a state of its own would be copied: make it on the spot, or pass one visitor for all");
  return Overloaded<std::decay_t<Handlers>...>{std::forward<Handlers>(handlers)...};
}

}  // namespace midikit::core::detail
