#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "MIDIKitCore/numbers/Pitch.hpp"

namespace midikit::core {

/// What a note-on or note-off message of MIDI 2.0 tells beside the velocity: an attribute type and 16 bits of
/// data. A sum type in four bytes.
class NoteAttribute {
 public:
  enum class Kind : std::uint8_t { manufacturerSpecific, profileSpecific, pitch7_9, undefined, none };

  /// `none`
  constexpr NoteAttribute() = default;

  static constexpr NoteAttribute none() { return {}; }
  static constexpr NoteAttribute manufacturerSpecific(std::uint16_t data) {
    return NoteAttribute(Kind::manufacturerSpecific, 1, data);
  }
  static constexpr NoteAttribute profileSpecific(std::uint16_t data) {
    return NoteAttribute(Kind::profileSpecific, 2, data);
  }
  static constexpr NoteAttribute pitch7_9(Pitch7_9 pitch) {
    return NoteAttribute(Kind::pitch7_9, 3, pitch.encoded());
  }
  static constexpr NoteAttribute undefined(std::uint8_t attributeType, std::uint16_t data) {
    return NoteAttribute(Kind::undefined, attributeType, data);
  }

  /// What a packet with that attribute type and data tells: type 0 is `none` whatever the data, 1 to 3 are
  /// the types that the MIDI 2.0 protocol specification defines, all others `undefined`.
  static constexpr NoteAttribute fromWire(std::uint8_t attributeType, std::uint16_t data) {
    if (attributeType == 0) {
      return {};
    }
    const auto kind = attributeType <= 3 ? static_cast<Kind>(attributeType - 1) : Kind::undefined;
    return NoteAttribute(kind, attributeType, data);
  }

  constexpr Kind kind() const { return kind_; }

  /// As it is sent; 0 for `none`.
  constexpr std::uint8_t attributeType() const { return type_; }

  /// As it is sent; 0 for `none`.
  constexpr std::uint16_t data() const { return data_; }

  /// The pitch of a `pitch7_9`, nothing for another kind.
  constexpr std::optional<Pitch7_9> pitch() const {
    return kind_ == Kind::pitch7_9 ? std::optional(Pitch7_9::fromEncoded(data_)) : std::nullopt;
  }

  /// As in "profileSpecific(5)", "pitch7.9(60, fine: 256)", "undefined(9, data: 5)" and "none".
  std::string description() const;

  friend constexpr bool operator==(const NoteAttribute&, const NoteAttribute&) = default;

 private:
  constexpr NoteAttribute(Kind kind, std::uint8_t type, std::uint16_t data)
      : data_(data), type_(type), kind_(kind) {}

  std::uint16_t data_ = 0;
  std::uint8_t type_ = 0;
  Kind kind_ = Kind::none;
};

}  // namespace midikit::core

template <>
struct std::hash<midikit::core::NoteAttribute> {
  constexpr std::size_t operator()(const midikit::core::NoteAttribute& attribute) const noexcept {
    return static_cast<std::size_t>(attribute.kind()) << 24 | std::size_t{attribute.attributeType()} << 16 |
           attribute.data();
  }
};
