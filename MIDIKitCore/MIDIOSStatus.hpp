#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace midikit::core {

/// A failure of the platform's MIDI service, kept with the number that it came with: one of the service's
/// named statuses, or any other number. Every number converts, so that a failure never gets lost on its way.
/// A plain value.
class MIDIOSStatus {
 public:
  /// The named statuses and their numbers, as the platform defines them.
  enum class Named : std::int32_t {
    invalidClient = -10830,
    invalidPort = -10831,
    wrongEndpointType = -10832,
    noConnection = -10833,
    unknownEndpoint = -10834,
    unknownProperty = -10835,
    wrongPropertyType = -10836,
    noCurrentSetup = -10837,
    messageSendErr = -10838,
    serverStartErr = -10839,
    setupFormatErr = -10840,
    wrongThread = -10841,
    objectNotFound = -10842,
    idNotUnique = -10843,
    notPermitted = -10844,
    unknownError = -10845,
    ioError = 7,
    internalError = -50,
  };
  using enum Named;

  constexpr MIDIOSStatus(Named named) : case_(named) {}

  /// The status that `number` stands for: a named one if there is one, else `other`. That includes 0,
  /// although the platform means success by it.
  static constexpr MIDIOSStatus fromNumber(std::int32_t number);

  /// A status without a name. Whoever has a number from the platform calls fromNumber(); an `other` made with
  /// the number of a named status is not equal to that one.
  static constexpr MIDIOSStatus other(std::int32_t number) { return MIDIOSStatus(number); }

  /// The platform's number: what fromNumber() was given.
  constexpr std::int32_t number() const {
    const auto named = this->named();
    return named ? static_cast<std::int32_t>(*named) : *std::get_if<std::int32_t>(&case_);
  }

  /// The named status; nothing for an `other`.
  constexpr std::optional<Named> named() const {
    const auto* named = std::get_if<Named>(&case_);
    return named != nullptr ? std::optional(*named) : std::nullopt;
  }

  /// What went wrong, for people.
  std::string text() const;

  /// Same case and, for `other`, same number.
  friend constexpr bool operator==(const MIDIOSStatus&, const MIDIOSStatus&) = default;

 private:
  constexpr explicit MIDIOSStatus(std::int32_t other) : case_(other) {}

  std::variant<std::int32_t, Named> case_;
};

constexpr MIDIOSStatus MIDIOSStatus::fromNumber(std::int32_t number) {
  constexpr auto first = static_cast<std::int32_t>(unknownError);
  constexpr auto last = static_cast<std::int32_t>(invalidClient);
  const auto named = static_cast<Named>(number);
  const bool isNamed = (number >= first && number <= last) || named == ioError || named == internalError;
  return isNamed ? MIDIOSStatus(named) : other(number);
}

}  // namespace midikit::core
