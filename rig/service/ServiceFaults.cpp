#include "rig/service/ServiceFaults.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>

#include "rig/service/ServedDevice.hpp"

namespace karvex::rig {
namespace {

/// Where a fault can show.
enum class Reach : std::uint8_t {
  anywhere,
  listUnlessSaid,    ///< anywhere, but in the list unless a place is given
  listOnly,          ///< it is a fault of the list's contents
  beforeAnyRequest,  ///< no place can be given
};

struct NamedFault {
  std::string_view name;
  Misbehaviour kind;
  Reach reach;
  std::string_view value;  ///< what the value is; empty if it takes none
  std::string_view usualValue;
  std::string_view effect;
};

constexpr std::array<NamedFault, 15> namedFaults = {{
    {"slow", Misbehaviour::slow, Reach::anywhere, "MS", "5000", "answers only after this time"},
    {"silent", Misbehaviour::silent, Reach::anywhere, "", "", "takes the request and never answers"},
    {"cut-off", Misbehaviour::cutOff, Reach::anywhere, "", "", "breaks off in the middle of the body"},
    {"wrong-certificate", Misbehaviour::wrongCertificate, Reach::beforeAnyRequest, "", "",
     "shows a certificate of another authority"},
    {"not-found", Misbehaviour::notFound, Reach::anywhere, "", "", "answers 404 with a page of HTML"},
    {"server-error", Misbehaviour::serverError, Reach::anywhere, "", "", "answers 500 with a page of HTML"},
    {"not-json", Misbehaviour::notJson, Reach::listUnlessSaid, "", "",
     "puts a warning of its own before the body"},
    {"missing-key", Misbehaviour::missingKey, Reach::listOnly, "KEY", "firmwareVersion",
     "leaves this key out of the last device"},
    {"null-value", Misbehaviour::nullValue, Reach::listOnly, "KEY", "firmwareName",
     "gives null for this key of the last device"},
    {"wrong-type", Misbehaviour::wrongType, Reach::listOnly, "KEY", "isValid",
     "gives a value of another type for this key of the last device"},
    {"out-of-range", Misbehaviour::outOfRange, Reach::listOnly, "NUMBER", "4294967296",
     "gives this setupDelay for the last device"},
    {"unknown-mcu", Misbehaviour::unknownMcu, Reach::listOnly, "NAME", "TEENSY99",
     "gives this mcu for the last device"},
    {"endless", Misbehaviour::endless, Reach::anywhere, "", "", "begins an answer and never ends it"},
    {"redirect-elsewhere", Misbehaviour::redirectElsewhere, Reach::anywhere, "URL", "file:///etc/passwd",
     "answers 302 with this URL"},
    {"empty-list", Misbehaviour::emptyList, Reach::listOnly, "", "", "lists no device"},
}};

constexpr std::array<std::string_view, 4> placeNames = {"list", "complete", "report", "firmware"};

/// The text in its three portions.
struct Portions {
  std::string_view name;
  std::optional<std::string_view> place;
  std::optional<std::string_view> value;
};

/// The value comes off first: a URL may well hold an "@".
Portions split(std::string_view text) {
  Portions portions;
  if (const auto equals = text.find('='); equals != std::string_view::npos) {
    portions.value = text.substr(equals + 1);
    text = text.substr(0, equals);
  }
  if (const auto at = text.find('@'); at != std::string_view::npos) {
    portions.place = text.substr(at + 1);
    text = text.substr(0, at);
  }
  portions.name = text;
  return portions;
}

std::optional<std::int64_t> parseNumber(std::string_view text) {
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool isWhole = error == std::errc{} && end == text.data() + text.size();
  return isWhole ? std::optional(value) : std::nullopt;
}

std::optional<std::string> setPlace(const NamedFault& named, std::optional<std::string_view> place,
                                    ServiceFault& fault) {
  if (!place) {
    const bool isOfList = named.reach == Reach::listOnly || named.reach == Reach::listUnlessSaid;
    fault.only = isOfList ? std::optional(ServicePlace::list) : std::nullopt;
    return std::nullopt;
  }
  if (named.reach == Reach::beforeAnyRequest) {
    return fmt::format("The fault {} shows before anything is asked, so it takes no place.", named.name);
  }
  const auto* found = std::find(placeNames.begin(), placeNames.end(), *place);
  if (found == placeNames.end()) {
    return fmt::format("There is no place called \"{}\", only {}.", *place, fmt::join(placeNames, ", "));
  }
  fault.only = static_cast<ServicePlace>(found - placeNames.begin());
  if (named.reach == Reach::listOnly && fault.only != ServicePlace::list) {
    return fmt::format("The fault {} is one of the list alone.", named.name);
  }
  return std::nullopt;
}

std::optional<std::string> setValue(const NamedFault& named, std::optional<std::string_view> given,
                                    ServiceFault& fault) {
  if (given && named.value.empty()) {
    return fmt::format("The fault {} takes no value.", named.name);
  }
  const auto value = given.value_or(named.usualValue);
  if (named.value == "KEY") {
    const auto keys = servedDeviceKeys();
    if (std::find(keys.begin(), keys.end(), value) == keys.end()) {
      return fmt::format("The fault {} takes a key of the list: {}.", named.name, fmt::join(keys, ", "));
    }
  } else if (named.value == "MS") {
    const auto number = parseNumber(value);
    if (!number || *number < 0 || *number > 0xFFFFFFFF) {
      return fmt::format("The fault {} takes a whole number from 0 to 4294967295.", named.name);
    }
    fault.number = *number;
  } else if (named.value == "NUMBER") {
    const auto number = parseNumber(value);
    if (!number) {
      return fmt::format("The fault {} takes a whole number of 64 bits.", named.name);
    }
    fault.number = *number;
  } else if (named.value == "URL" && value.empty()) {
    return fmt::format("The fault {} takes a URL.", named.name);
  }
  fault.text = value;
  return std::nullopt;
}

bool isAt(const ServiceFault& fault, std::optional<ServicePlace> place) {
  return !fault.only || fault.only == place;
}

}  // namespace

std::chrono::milliseconds ServiceFaults::delayAt(std::optional<ServicePlace> place) const {
  const auto found = std::find_if(faults.rbegin(), faults.rend(), [place](const ServiceFault& fault) {
    return fault.kind == Misbehaviour::slow && isAt(fault, place);
  });
  return std::chrono::milliseconds(found != faults.rend() ? found->number : 0);
}

const ServiceFault* ServiceFaults::answerAt(std::optional<ServicePlace> place) const {
  const auto found = std::find_if(faults.rbegin(), faults.rend(), [place](const ServiceFault& fault) {
    return fault.kind != Misbehaviour::slow && fault.kind != Misbehaviour::wrongCertificate &&
           isAt(fault, place);
  });
  return found != faults.rend() ? &*found : nullptr;
}

bool ServiceFaults::hasWrongCertificate() const {
  return std::any_of(faults.begin(), faults.end(),
                     [](const ServiceFault& fault) { return fault.kind == Misbehaviour::wrongCertificate; });
}

std::optional<std::string> addServiceFault(std::string_view text, ServiceFaults& faults) {
  const auto portions = split(text);
  const auto* named =
      std::find_if(namedFaults.begin(), namedFaults.end(),
                   [&portions](const NamedFault& candidate) { return candidate.name == portions.name; });
  if (named == namedFaults.end()) {
    return fmt::format("There is no fault of the service called \"{}\".", portions.name);
  }
  ServiceFault fault{.kind = named->kind, .only = {}};
  if (auto complaint = setPlace(*named, portions.place, fault)) {
    return complaint;
  }
  if (auto complaint = setValue(*named, portions.value, fault)) {
    return complaint;
  }
  faults.faults.push_back(std::move(fault));
  return std::nullopt;
}

std::string describeServiceFaults() {
  std::string text;
  for (const auto& fault : namedFaults) {
    const bool hasPlace = fault.reach == Reach::anywhere || fault.reach == Reach::listUnlessSaid;
    const auto form = fmt::format("{}{}{}", fault.name, hasPlace ? "[@PLACE]" : "",
                                  fault.value.empty() ? "" : fmt::format("[={}]", fault.value));
    const auto usual = fault.value.empty() ? "" : fmt::format(" (default {})", fault.usualValue);
    text += fmt::format("  {:<33} {}{}\n", form, fault.effect, usual);
  }
  return text + fmt::format("  PLACE is one of {}; without it, the fault shows wherever it can.\n",
                            fmt::join(placeNames, ", "));
}

}  // namespace karvex::rig
