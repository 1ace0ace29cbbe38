#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <type_traits>

namespace midikit::core {

/// A set of the types of one event family, `Type` being its enumeration: one bit for each. A plain value.
template <class Type>
  requires std::is_enum_v<Type>
class MIDIEventTypeSet {
 public:
  constexpr MIDIEventTypeSet() = default;
  constexpr MIDIEventTypeSet(std::initializer_list<Type> types) {
    for (const Type type : types) {
      insert(type);
    }
  }

  constexpr bool contains(Type type) const { return (bits_ & bit(type)) != 0; }
  constexpr bool empty() const { return bits_ == 0; }
  constexpr void insert(Type type) { bits_ |= bit(type); }
  constexpr void remove(Type type) { bits_ &= ~bit(type); }

  friend constexpr bool operator==(MIDIEventTypeSet, MIDIEventTypeSet) = default;

 private:
  friend std::hash<MIDIEventTypeSet>;

  static constexpr std::uint32_t bit(Type type) { return std::uint32_t{1} << static_cast<unsigned>(type); }

  std::uint32_t bits_ = 0;
};

}  // namespace midikit::core

template <class Type>
struct std::hash<midikit::core::MIDIEventTypeSet<Type>> {
  constexpr std::size_t operator()(midikit::core::MIDIEventTypeSet<Type> types) const noexcept {
    return types.bits_;
  }
};
