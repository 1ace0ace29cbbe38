#pragma once

#include <concepts>
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

}  // namespace midikit::core::detail
