#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "MIDIKitCore/wire/MIDIProtocolVersion.hpp"
#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"

namespace midikit::io {

/// Which generation of the platform's MIDI interface an object uses: the newer one, of event lists in a
/// protocol, or the older one, of packet lists. One byte.
class CoreMIDIAPIVersion {
 public:
  /// The platform's first version that has the newer interface.
  static constexpr PlatformVersion newCoreMIDISince{11, 0};

  static constexpr CoreMIDIAPIVersion newCoreMIDI(core::MIDIProtocolVersion protocol) {
    return CoreMIDIAPIVersion(static_cast<std::uint8_t>(protocol));
  }
  static constexpr CoreMIDIAPIVersion legacyCoreMIDI() { return CoreMIDIAPIVersion(legacy); }

  /// The newer interface with MIDI 2.0 where the platform has it.
  static constexpr CoreMIDIAPIVersion bestFor(PlatformVersion platform) {
    return newCoreMIDI(core::MIDIProtocolVersion::midi2_0).validOn(platform);
  }

  /// Whether the platform has this interface.
  constexpr bool isValidOn(PlatformVersion platform) const {
    return *this == legacyCoreMIDI() || platform >= newCoreMIDISince;
  }

  /// This version if the platform has it, else the older one.
  constexpr CoreMIDIAPIVersion validOn(PlatformVersion platform) const {
    return isValidOn(platform) ? *this : legacyCoreMIDI();
  }

  /// The protocol of the newer interface; none for the older one.
  constexpr std::optional<core::MIDIProtocolVersion> protocol() const {
    return rawValue_ == legacy ? std::nullopt
                               : std::optional(static_cast<core::MIDIProtocolVersion>(rawValue_));
  }

  /// 0 and 1 for the newer interface with MIDI 1.0 and 2.0, 2 for the older one.
  constexpr std::uint8_t rawValue() const { return rawValue_; }

  /// "New Core MIDI API (MIDI 2.0)", "Legacy Core MIDI API"
  std::string description() const {
    const auto newer = protocol();
    return newer ? "New Core MIDI API (" + std::string(core::description(*newer)) + ")"
                 : "Legacy Core MIDI API";
  }

  friend constexpr bool operator==(CoreMIDIAPIVersion, CoreMIDIAPIVersion) = default;

 private:
  static constexpr std::uint8_t legacy = 2;
  static_assert(static_cast<std::uint8_t>(core::MIDIProtocolVersion::midi1_0) == 0 &&
                static_cast<std::uint8_t>(core::MIDIProtocolVersion::midi2_0) == 1);

  constexpr explicit CoreMIDIAPIVersion(std::uint8_t rawValue) : rawValue_(rawValue) {}

  std::uint8_t rawValue_;
};
static_assert(sizeof(CoreMIDIAPIVersion) == 1);

}  // namespace midikit::io
