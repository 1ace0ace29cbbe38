#pragma once

#include <cstddef>
#include <iterator>

#include "MIDIKitCore/notes/MIDINote.hpp"

namespace midikit::core {

/// The notes from a lowest to a highest one, both included, step by step in the lowest one's style. A plain
/// value, and a forward range whose iterators need no range to stay valid. Any thread.
class MIDINoteRange {
 public:
  class Iterator {
   public:
    using value_type = MIDINote;
    using difference_type = std::ptrdiff_t;
    using iterator_category = std::forward_iterator_tag;

    constexpr Iterator() = default;

    constexpr MIDINote operator*() const { return {UInt7(number_), style_}; }
    constexpr Iterator& operator++() {
      ++number_;
      return *this;
    }
    constexpr Iterator operator++(int) {
      const Iterator before = *this;
      ++number_;
      return before;
    }
    constexpr bool operator==(const Iterator&) const = default;

   private:
    friend class MIDINoteRange;
    constexpr Iterator(int number, MIDINote::Style style) : number_(number), style_(style) {}

    int number_ = 0;  // one above the highest note at the end
    MIDINote::Style style_ = MIDINote::Style::yamaha;
  };

  /// The caller keeps `lowest` at or below `highest`.
  constexpr MIDINoteRange(MIDINote lowest, MIDINote highest) : lowest_(lowest), highest_(highest.number) {}

  constexpr MIDINote lowest() const { return lowest_; }
  constexpr MIDINote highest() const { return {highest_, lowest_.style}; }

  constexpr Iterator begin() const { return {lowest_.number.value(), lowest_.style}; }
  constexpr Iterator end() const { return {highest_.value() + 1, lowest_.style}; }
  constexpr std::size_t size() const { return static_cast<std::size_t>(lowest().distanceTo(highest()) + 1); }

  /// Whether the note's number lies in the range, in whichever style.
  constexpr bool contains(MIDINote note) const { return note >= lowest() && note <= highest(); }

  constexpr bool operator==(const MIDINoteRange&) const = default;

 private:
  MIDINote lowest_;
  UInt7 highest_;
};

constexpr MIDINoteRange MIDINote::allNotes(Style style) {
  return {{UInt7(0), style}, {UInt7(127), style}};
}
constexpr MIDINoteRange MIDINote::pianoKeys(Style style) {
  return {{UInt7(21), style}, {UInt7(108), style}};
}

}  // namespace midikit::core
