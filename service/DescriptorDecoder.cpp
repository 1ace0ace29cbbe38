#include "service/DescriptorDecoder.hpp"

#include <fmt/format.h>

#include <cmath>
#include <cstdint>
#include <exception>
#include <nlohmann/json.hpp>
#include <type_traits>
#include <utility>

namespace karvex::service {
namespace {

using Json = nlohmann::json;
using records::ServerDeviceDescriptor;

/// What is wrong at one place: the line to print, and for other readers the place and the reason apart.
struct Refusal {
  std::string heading;  ///< the beginning of the line to print
  std::string subject;  ///< the sentence up to the place
  std::string place;
  std::string rest;  ///< the sentence after the place
  std::string key;   ///< of the element; empty if it is refused as a whole

  std::string line() const { return fmt::format("{}{} at {}{}", heading, subject, placeText(), rest); }
  DescriptorFault fault() const { return {.key = key, .reason = subject + rest}; }

 private:
  std::string_view placeText() const { return place.empty() ? std::string_view("the top") : place; }
};

Refusal wrongType(std::string_view expected, const std::string& place, const Json& found) {
  return {.heading = fmt::format("Erreur : Type non conforme '{}' - ", expected),
          .subject = fmt::format("Expected {}", expected),
          .place = place,
          .rest = fmt::format(", found {}.", found.type_name())};
}

Refusal noValue(std::string_view expected, const std::string& place) {
  return {.heading = fmt::format("Erreur : Valeur non trouvée '{}' - ", expected),
          .subject = fmt::format("Expected {}", expected),
          .place = place,
          .rest = ", found null."};
}

Refusal noKey(std::string_view key, const std::string& place) {
  return {.heading = fmt::format("Erreur : Clé non trouvée '{}' - ", key),
          .subject = fmt::format("No value for key {}", key),
          .place = place,
          .rest = ".",
          .key = std::string(key)};
}

constexpr std::string_view corrupted = "Erreur : Données corrompues - ";

/// The parser quotes what it stumbles over, which can be all of a long answer.
std::string_view beginningOf(std::string_view text) {
  constexpr std::size_t enough = 200;
  return text.substr(0, enough);
}

template <typename T>
constexpr std::string_view nameOfType() {
  if constexpr (std::is_same_v<T, bool>) {
    return "Bool";
  } else if constexpr (std::is_same_v<T, std::string>) {
    return "String";
  } else if constexpr (std::is_same_v<T, std::uint32_t>) {
    return "UInt32";
  } else {
    return "Int";
  }
}

/// The number as a T, or nothing if it doesn't fit. A whole number is one however it is written: to JSON,
/// 5, 5.0 and 5e0 are the same.
template <typename T>
std::optional<T> wholeNumber(const Json& value) {
  if (value.is_number_unsigned()) {
    const auto number = value.get<std::uint64_t>();
    return std::in_range<T>(number) ? std::optional(static_cast<T>(number)) : std::nullopt;
  }
  if (value.is_number_float()) {
    constexpr double exactBelow = 9007199254740992.0;  // 2^53, up to which a double holds every whole number
    const auto number = value.get<double>();
    const bool isWhole = std::abs(number) < exactBelow && std::trunc(number) == number;
    return isWhole && std::in_range<T>(static_cast<std::int64_t>(number))
               ? std::optional(static_cast<T>(number))
               : std::nullopt;
  }
  const auto number = value.get<std::int64_t>();
  return std::in_range<T>(number) ? std::optional(static_cast<T>(number)) : std::nullopt;
}

/// Exactly one of the two is there.
template <typename T>
struct Decoded {
  std::optional<T> value;
  std::optional<Refusal> refusal;
};

template <typename T>
Decoded<T> decodeNumber(const Json& value, const std::string& place) {
  if (!value.is_number()) {
    return {.refusal = wrongType(nameOfType<T>(), place, value)};
  }
  if (const auto number = wholeNumber<T>(value)) {
    return {.value = number};
  }
  return {.refusal = Refusal{.heading = std::string(corrupted),
                             .subject = fmt::format("The number {}", value.dump()),
                             .place = place,
                             .rest = fmt::format(" does not fit in {}.", nameOfType<T>())}};
}

template <typename T>
Decoded<T> decodeValue(const Json& value, const std::string& place) {
  if (value.is_null()) {
    return {.refusal = noValue(nameOfType<T>(), place)};
  }
  if constexpr (std::is_same_v<T, bool> || std::is_same_v<T, std::string>) {
    const bool isOfType = std::is_same_v<T, bool> ? value.is_boolean() : value.is_string();
    return isOfType ? Decoded<T>{.value = value.get<T>()}
                    : Decoded<T>{.refusal = wrongType(nameOfType<T>(), place, value)};
  } else {
    return decodeNumber<T>(value, place);
  }
}

constexpr std::string_view typeOfElement = "Dictionary<String, Any>";
constexpr std::string_view typeOfList = "Array<Any>";

/// One element of the array. Fields are looked at in the order of the record.
class Element {
 public:
  Element(const Json& object, std::size_t index) : object_(object), place_(fmt::format("[{}]", index)) {
    if (object.is_null()) {
      refusals_.push_back(noValue(typeOfElement, place_));
    } else if (!object.is_object()) {
      refusals_.push_back(wrongType(typeOfElement, place_, object));
    }
  }

  template <typename T>
  void read(const char* key, T& field) {
    if (!object_.is_object()) {
      return;
    }
    const auto found = object_.find(key);
    if (found == object_.end()) {
      refusals_.push_back(noKey(key, place_));
      return;
    }
    take<T>(key, *found, field);
  }

  template <typename T>
  void read(const char* key, std::optional<T>& field) {
    const auto found = object_.find(key);
    if (found != object_.end() && !found->is_null()) {
      take<T>(key, *found, field);
    }
  }

  const std::vector<Refusal>& refusals() const { return refusals_; }

 private:
  template <typename T, typename Field>
  void take(const char* key, const Json& value, Field& field) {
    auto decoded = decodeValue<T>(value, fmt::format("{}.{}", place_, key));
    if (decoded.value) {
      field = std::move(*decoded.value);
    } else {
      refusals_.push_back(std::move(*decoded.refusal));
      refusals_.back().key = key;
    }
  }

  const Json& object_;
  std::string place_;
  std::vector<Refusal> refusals_;
};

/// Reads what it can, and returns what was wrong.
std::vector<Refusal> decodeElement(const Json& object, std::size_t index,
                                   ServerDeviceDescriptor& descriptor) {
  Element element(object, index);
  element.read("isValid", descriptor.isValid);
  element.read("midiName", descriptor.midiName);
  element.read("deviceSerialNumber", descriptor.deviceSerialNumber);
  element.read("mcu", descriptor.mcu);
  element.read("firmwareName", descriptor.firmwareName);
  element.read("firmwareVersion", descriptor.firmwareVersion);
  element.read("setupDelay", descriptor.setupDelay);
  element.read("serverURL", descriptor.serverURL);
  element.read("serverDirectory", descriptor.serverDirectory);
  element.read("serverFile", descriptor.serverFile);
  element.read("sequenceNumber", descriptor.sequenceNumber);
  element.read("currentVersion", descriptor.currentVersion);
  return element.refusals();
}

std::optional<Refusal> refusalOfDocument(const Json& document) {
  if (document.is_null()) {
    return noValue(typeOfList, "");
  }
  return document.is_array() ? std::nullopt : std::optional(wrongType(typeOfList, "", document));
}

std::vector<ServerDeviceDescriptor> decodeArray(const Json& document, std::optional<Refusal>& refusal) {
  std::vector<ServerDeviceDescriptor> descriptors;
  refusal = refusalOfDocument(document);
  for (std::size_t index = 0; !refusal && index < document.size(); ++index) {
    const auto refusals = decodeElement(document[index], index, descriptors.emplace_back());
    if (!refusals.empty()) {
      refusal = refusals.front();
    }
  }
  return descriptors;
}

}  // namespace

DecodedDescriptors decodeDescriptors(std::string_view answer) {
  DecodedDescriptors result;
  Json document;
  try {
    document = Json::parse(answer);
  } catch (const Json::exception& error) {
    result.messages.push_back(fmt::format("Erreur de validation JSON : {}", beginningOf(error.what())));
    result.messages.push_back(fmt::format("{}The given data was not valid JSON.", corrupted));
    return result;
  }
  try {
    std::optional<Refusal> refusal;
    auto descriptors = decodeArray(document, refusal);
    if (refusal) {
      result.messages.push_back(refusal->line());
    } else {
      result.descriptors = std::move(descriptors);
    }
  } catch (const std::exception& error) {
    result.messages.push_back(fmt::format("Erreur inattendue : {}", error.what()));
  }
  return result;
}

ExaminedList examineDescriptors(std::string_view list, std::size_t mostFaults) {
  ExaminedList result;
  const auto document = Json::parse(list, nullptr, /*allow_exceptions=*/false);
  if (document.is_discarded()) {
    result.fault = {.key = "", .reason = "The given data was not valid JSON."};
  } else if (const auto refusal = refusalOfDocument(document)) {
    result.fault = refusal->fault();
  }
  std::size_t faults = 0;
  for (std::size_t index = 0; !result.fault && faults < mostFaults && index < document.size(); ++index) {
    auto& element = result.elements.emplace_back();
    for (const auto& refusal : decodeElement(document[index], index, element.descriptor)) {
      element.faults.push_back(refusal.fault());
    }
    faults += element.faults.size();
  }
  return result;
}

}  // namespace karvex::service
