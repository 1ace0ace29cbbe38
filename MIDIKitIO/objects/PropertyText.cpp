#include "MIDIKitIO/objects/PropertyText.hpp"

#include <filesystem>
#include <system_error>
#include <variant>

#include "MIDIKitIO/objects/PropertyAccess.hpp"
#include "MIDIKitInternals/RadixText.hpp"
#include "MIDIKitInternals/Text.hpp"

namespace midikit::io {
namespace {

constexpr std::string_view unreadable = "-";

std::string pathText(const std::string& path) {
  auto url = fileURLText(path);
  return url.empty() ? std::string(unreadable) : url;
}

std::string escaped(std::string_view text) {
  std::string result;
  for (const char character : text) {
    if (character == '"' || character == '\\') {
      result += '\\';
    }
    result += character;
  }
  return internals::quoted(result);
}

struct ValueText {
  std::string operator()(std::int32_t number) const { return std::to_string(number); }
  std::string operator()(const std::string& text) const { return escaped(text); }
  std::string operator()(const PropertyDictionary& dictionary) const { return dictionaryText(dictionary); }
};

/// The characters that can stand in a path as they are (RFC 3986, 3.3).
bool isPathCharacter(char character) {
  constexpr std::string_view others = "-._~!$&'()*+,;=:@/";
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9') || others.find(character) != std::string_view::npos;
}

/// What is shown in the place of a property that the platform doesn't have yet.
std::string tooOldText(const MIDIIOPropertyTraits& traits) {
  return traits.form == MIDIIOPropertyForm::protocol
             ? "OS not supported. Requires macOS 11.0, macCatalyst 14.0, or iOS 14.0."
             : "OS not supported. Requires macOS 10.15, macCatalyst 13.0, or iOS 13.0.";
}

std::string integerText(std::int32_t value, MIDIIOPropertyForm form) {
  switch (form) {
    case MIDIIOPropertyForm::yesNo:
      return value == 1 ? "Yes" : "No";
    case MIDIIOPropertyForm::bitMask:
      return internals::binaryText(static_cast<std::uint32_t>(value), {.width = 8, .prefix = true});
    case MIDIIOPropertyForm::protocol:
      return value == 1 ? "MIDI 1.0" : "MIDI 2.0";
    default:
      return std::to_string(value);
  }
}

std::string dictionaryPropertyText(const MIDIService& service, MIDIObjectRef object, std::string_view key) {
  try {
    return dictionaryText(dictionaryProperty(service, object, key));
  } catch (const core::MIDIIOError&) {
    return std::string(unreadable);
  }
}

}  // namespace

std::string propertyText(const MIDIService& service, MIDIObjectRef object, MIDIIOProperty property) {
  const auto& traits = traitsOf(property);
  if (service.platformVersion() < traits.since) {
    return tooOldText(traits);
  }
  if (traits.form == MIDIIOPropertyForm::dictionary) {
    return dictionaryPropertyText(service, object, traits.platformKey);
  }
  if (traits.form == MIDIIOPropertyForm::text || traits.form == MIDIIOPropertyForm::fileURL) {
    const auto text = readTextProperty(service, object, traits.platformKey);
    if (!text) {
      return std::string(unreadable);
    }
    return traits.form == MIDIIOPropertyForm::text ? *text : pathText(*text);
  }
  return integerText(integerProperty(service, object, traits.platformKey), traits.form);
}

std::vector<std::pair<std::string_view, std::string>> properties(const MIDIService& service,
                                                                 MIDIObjectRef object, MIDIIOObjectType type,
                                                                 bool onlyRelevant) {
  std::vector<std::pair<std::string_view, std::string>> result;
  for (const auto property : allProperties()) {
    const auto& traits = traitsOf(property);
    if (!onlyRelevant || traits.appliesTo(type)) {
      result.emplace_back(traits.label, propertyText(service, object, property));
    }
  }
  return result;
}

std::string dictionaryText(const PropertyDictionary& dictionary) {
  std::string text = "{";
  std::string_view between;
  for (const auto& [key, value] : dictionary) {
    text.append(between).append(escaped(key)).append(": ").append(std::visit(ValueText(), value));
    between = ", ";
  }
  return text + "}";
}

std::string fileURLText(std::string_view path) {
  std::error_code error;
  const auto absolute = path.empty() ? std::filesystem::path() : std::filesystem::absolute(path, error);
  if (error || absolute.empty()) {
    return {};
  }
  std::string text = "file://";
  for (const char character : absolute.native()) {
    if (isPathCharacter(character)) {
      text += character;
    } else {
      text += '%';
      text += internals::hexText(static_cast<unsigned char>(character), {.width = 2});
    }
  }
  return text;
}

}  // namespace midikit::io
