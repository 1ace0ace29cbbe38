#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

namespace midikit::core {

/// What a per-note management message asks for. The raw value is the flag's bit in the message (MIDI 2.0
/// protocol specification).
enum class OptionFlag : std::uint8_t {
  resetPerNoteControllers = 1,   ///< S: set the note's controllers to their defaults
  detachPerNoteControllers = 2,  ///< D: controllers no longer act on notes that sound already
};

/// The flag's name.
constexpr std::string_view description(OptionFlag flag) {
  return flag == OptionFlag::detachPerNoteControllers ? "detachPerNoteControllers"
                                                      : "resetPerNoteControllers";
}

/// A set of option flags.
class OptionFlags {
 public:
  constexpr OptionFlags() = default;
  constexpr OptionFlags(OptionFlag flag) { insert(flag); }
  constexpr OptionFlags(std::initializer_list<OptionFlag> flags) {
    for (const OptionFlag flag : flags) {
      insert(flag);
    }
  }

  /// The flags of a message; bits without a meaning are ignored.
  static constexpr OptionFlags fromRawValue(std::uint8_t bits) {
    OptionFlags flags;
    flags.bits_ = bits & 3;
    return flags;
  }

  /// The bits of the message.
  constexpr std::uint8_t rawValue() const { return bits_; }

  constexpr bool contains(OptionFlag flag) const { return (bits_ & static_cast<std::uint8_t>(flag)) != 0; }
  constexpr bool empty() const { return bits_ == 0; }
  constexpr void insert(OptionFlag flag) { bits_ |= static_cast<std::uint8_t>(flag); }
  constexpr void remove(OptionFlag flag) { bits_ &= static_cast<std::uint8_t>(~static_cast<unsigned>(flag)); }

  /// "[detachPerNoteControllers, resetPerNoteControllers]", with those that are in the set.
  std::string description() const;

  friend constexpr bool operator==(const OptionFlags&, const OptionFlags&) = default;

 private:
  std::uint8_t bits_ = 0;
};

}  // namespace midikit::core

template <>
struct std::hash<midikit::core::OptionFlags> {
  constexpr std::size_t operator()(const midikit::core::OptionFlags& flags) const noexcept {
    return flags.rawValue();
  }
};
