#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace karvex::rig {

/// What the firmware service is asked for.
enum class ServicePlace : std::uint8_t { list, complete, report, firmware };

enum class Misbehaviour : std::uint8_t {
  slow,
  silent,
  cutOff,
  wrongCertificate,
  notFound,
  serverError,
  notJson,
  missingKey,
  nullValue,
  wrongType,
  outOfRange,
  unknownMcu,
  endless,
  redirectElsewhere,
  emptyList,
};

/// One thing that the service does wrong.
struct ServiceFault {
  Misbehaviour kind;
  std::optional<ServicePlace> only;  ///< nothing: wherever it is asked
  std::int64_t number = 0;           ///< milliseconds, or the number that is out of range
  std::string text;                  ///< a key of the list, or a URL
};

/// What is wrong with the service. By default nothing is. Where several faults say how to answer, the one
/// that was added last holds; a delay goes with any of them.
struct ServiceFaults {
  std::vector<ServiceFault> faults;

  /// How long the service takes before it answers there.
  std::chrono::milliseconds delayAt(std::optional<ServicePlace> place) const;

  /// What is wrong with the answer there, or null.
  const ServiceFault* answerAt(std::optional<ServicePlace> place) const;

  /// True if the service shows a certificate that nobody has reason to trust.
  bool hasWrongCertificate() const;
};

/// Adds a fault by its name, "NAME[@PLACE][=VALUE]" with the places list, complete, report and firmware.
/// Gives a sentence that says what is wrong with the text, or nothing if it was understood.
std::optional<std::string> addServiceFault(std::string_view text, ServiceFaults& faults);

/// The names with what they do, one a line, for a help text.
std::string describeServiceFaults();

}  // namespace karvex::rig
