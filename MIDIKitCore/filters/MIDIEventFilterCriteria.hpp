#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitCore/controllers/Controller.hpp"
#include "MIDIKitCore/events/MIDIEventFamily.hpp"
#include "MIDIKitCore/events/MIDIEventTypeSet.hpp"
#include "MIDIKitCore/numbers/UInt.hpp"
#include "MIDIKitCore/numbers/UInt7Range.hpp"

namespace midikit::core {

/// What a criterion finds in an event: nothing to judge, or something that matches or doesn't.
enum class MIDIEventMatch : std::uint8_t { outsideScope, matching, differing };

namespace detail {

constexpr MIDIEventMatch judged(bool isMatch) {
  return isMatch ? MIDIEventMatch::matching : MIDIEventMatch::differing;
}

/// A value that not every event has, against those that are looked for.
template <class Value, class IsWanted>
constexpr MIDIEventMatch judged(const std::optional<Value>& value, IsWanted isWanted) {
  return value ? judged(isWanted(*value)) : MIDIEventMatch::outsideScope;
}

template <class Value>
bool stands(const Value& value, const std::vector<Value>& in) {
  return std::ranges::find(in, value) != in.end();
}

/// The channel of a channel voice event.
constexpr std::optional<UInt4> channelOf(const MIDIEvent& event) {
  return event.visit([]<class Record>(const Record& record) -> std::optional<UInt4> {
    if constexpr (requires { record.channel; }) {
      return record.channel;
    } else {
      return std::nullopt;
    }
  });
}

/// The controller of a control change; the per-note ones have none.
constexpr std::optional<Controller> controllerOf(const MIDIEvent& event) {
  const auto* const change = event.as<CC>();
  return change != nullptr ? std::optional(change->controller) : std::nullopt;
}

/// The note number of a note-on or note-off; other events about a note have none here.
constexpr std::optional<UInt7> noteNumberOf(const MIDIEvent& event) {
  if (const auto* const on = event.as<NoteOn>()) {
    return on->note.number;
  }
  const auto* const off = event.as<NoteOff>();
  return off != nullptr ? std::optional(off->note.number) : std::nullopt;
}

}  // namespace detail

// The criteria by which filters judge an event, by itself: which events they judge at all, and which of those
// match. Plain values with one field each, which may be used from any thread.

/// Every event of the family matches.
template <MIDIEventFamilyType Type>
struct IsOfFamily {
  constexpr MIDIEventMatch judge(const MIDIEvent& event) const {
    return isOfFamily<Type>(event) ? MIDIEventMatch::matching : MIDIEventMatch::outsideScope;
  }
  constexpr bool operator==(const IsOfFamily&) const = default;
};

template <MIDIEventFamilyType Type>
struct IsOfType {
  Type type;

  constexpr MIDIEventMatch judge(const MIDIEvent& event) const {
    return detail::judged(typeInFamily<Type>(event), [this](Type found) { return found == type; });
  }
  constexpr bool operator==(const IsOfType&) const = default;
};

template <MIDIEventFamilyType Type>
struct IsOfTypes {
  MIDIEventTypeSet<Type> types;

  constexpr MIDIEventMatch judge(const MIDIEvent& event) const {
    return detail::judged(typeInFamily<Type>(event), [this](Type found) { return types.contains(found); });
  }
  constexpr bool operator==(const IsOfTypes&) const = default;
};

/// Judges every channel voice event.
struct IsOnChannel {
  UInt4 channel;

  constexpr MIDIEventMatch judge(const MIDIEvent& event) const {
    return detail::judged(detail::channelOf(event), [this](UInt4 found) { return found == channel; });
  }
  constexpr bool operator==(const IsOnChannel&) const = default;
};

struct IsOnChannels {
  std::vector<UInt4> channels;

  MIDIEventMatch judge(const MIDIEvent& event) const {
    return detail::judged(detail::channelOf(event),
                          [this](UInt4 found) { return detail::stands(found, channels); });
  }
  bool operator==(const IsOnChannels&) const = default;
};

/// Judges control changes alone.
struct IsOfController {
  Controller controller;

  constexpr MIDIEventMatch judge(const MIDIEvent& event) const {
    return detail::judged(detail::controllerOf(event),
                          [this](Controller found) { return found == controller; });
  }
  constexpr bool operator==(const IsOfController&) const = default;
};

struct IsOfControllers {
  std::vector<Controller> controllers;

  MIDIEventMatch judge(const MIDIEvent& event) const {
    return detail::judged(detail::controllerOf(event),
                          [this](Controller found) { return detail::stands(found, controllers); });
  }
  bool operator==(const IsOfControllers&) const = default;
};

/// Judges note-ons and note-offs alone.
struct IsNoteInRange {
  UInt7Range range;

  constexpr MIDIEventMatch judge(const MIDIEvent& event) const {
    return detail::judged(detail::noteNumberOf(event), [this](UInt7 found) { return range.contains(found); });
  }
  constexpr bool operator==(const IsNoteInRange&) const = default;
};

struct IsNoteInRanges {
  std::vector<UInt7Range> ranges;

  MIDIEventMatch judge(const MIDIEvent& event) const {
    return detail::judged(detail::noteNumberOf(event), [this](UInt7 found) {
      return std::ranges::any_of(ranges, [found](UInt7Range range) { return range.contains(found); });
    });
  }
  bool operator==(const IsNoteInRanges&) const = default;
};

/// Judges every event.
struct IsInGroup {
  UInt4 group;

  constexpr MIDIEventMatch judge(const MIDIEvent& event) const {
    return detail::judged(event.group() == group);
  }
  constexpr bool operator==(const IsInGroup&) const = default;
};

struct IsInGroups {
  std::vector<UInt4> groups;

  MIDIEventMatch judge(const MIDIEvent& event) const {
    return detail::judged(detail::stands(event.group(), groups));
  }
  bool operator==(const IsInGroups&) const = default;
};

}  // namespace midikit::core
