#include "service/DescriptorDecoder.hpp"

#include <fmt/format.h>

#include <cmath>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace karvex::service {
namespace {

using Json = nlohmann::json;
using records::ServerDeviceDescriptor;

/// Carries the line to print.
class DecodingError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

DecodingError wrongType(std::string_view expected, const std::string& place, const Json& found) {
  return DecodingError(fmt::format("Erreur : Type non conforme '{}' - Expected {} at {}, found {}.", expected,
                                   expected, place, found.type_name()));
}

DecodingError noValue(std::string_view expected, const std::string& place) {
  return DecodingError(fmt::format("Erreur : Valeur non trouvée '{}' - Expected {} at {}, found null.",
                                   expected, expected, place));
}

DecodingError noKey(std::string_view key, const std::string& place) {
  return DecodingError(
      fmt::format("Erreur : Clé non trouvée '{}' - No value for key {} at {}.", key, key, place));
}

DecodingError corrupted(const std::string& description) {
  return DecodingError("Erreur : Données corrompues - " + description);
}

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

template <typename T>
T decodeNumber(const Json& value, const std::string& place) {
  if (!value.is_number()) {
    throw wrongType(nameOfType<T>(), place, value);
  }
  if (const auto number = wholeNumber<T>(value)) {
    return *number;
  }
  throw corrupted(
      fmt::format("The number {} at {} does not fit in {}.", value.dump(), place, nameOfType<T>()));
}

template <typename T>
T decodeValue(const Json& value, const std::string& place) {
  if (value.is_null()) {
    throw noValue(nameOfType<T>(), place);
  }
  if constexpr (std::is_same_v<T, bool>) {
    if (!value.is_boolean()) {
      throw wrongType(nameOfType<T>(), place, value);
    }
    return value.get<bool>();
  } else if constexpr (std::is_same_v<T, std::string>) {
    if (!value.is_string()) {
      throw wrongType(nameOfType<T>(), place, value);
    }
    return value.get<std::string>();
  } else {
    return decodeNumber<T>(value, place);
  }
}

/// One element of the array. Fields are looked at in the order of the record.
class Element {
 public:
  Element(const Json& object, std::size_t index) : object_(object), place_(fmt::format("[{}]", index)) {
    if (object.is_null()) {
      throw noValue("Dictionary<String, Any>", place_);
    }
    if (!object.is_object()) {
      throw wrongType("Dictionary<String, Any>", place_, object);
    }
  }

  template <typename T>
  void read(const char* key, T& field) const {
    const auto found = object_.find(key);
    if (found == object_.end()) {
      throw noKey(key, place_);
    }
    field = decodeValue<T>(*found, placeOf(key));
  }

  template <typename T>
  void read(const char* key, std::optional<T>& field) const {
    const auto found = object_.find(key);
    if (found != object_.end() && !found->is_null()) {
      field = decodeValue<T>(*found, placeOf(key));
    }
  }

 private:
  std::string placeOf(const char* key) const { return fmt::format("{}.{}", place_, key); }

  const Json& object_;
  std::string place_;
};

ServerDeviceDescriptor decodeElement(const Json& object, std::size_t index) {
  const Element element(object, index);
  ServerDeviceDescriptor descriptor;
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
  return descriptor;
}

std::vector<ServerDeviceDescriptor> decodeArray(const Json& document) {
  if (document.is_null()) {
    throw noValue("Array<Any>", "the top");
  }
  if (!document.is_array()) {
    throw wrongType("Array<Any>", "the top", document);
  }
  std::vector<ServerDeviceDescriptor> descriptors;
  descriptors.reserve(document.size());
  for (const auto& element : document) {
    descriptors.push_back(decodeElement(element, descriptors.size()));
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
    result.messages.emplace_back(corrupted("The given data was not valid JSON.").what());
    return result;
  }
  try {
    result.descriptors = decodeArray(document);
  } catch (const DecodingError& error) {
    result.messages.emplace_back(error.what());
  } catch (const std::exception& error) {
    result.messages.push_back(fmt::format("Erreur inattendue : {}", error.what()));
  }
  return result;
}

}  // namespace karvex::service
