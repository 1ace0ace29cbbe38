#include "rig/maker/FirmwareFolder.hpp"

#include <charconv>

#include "rig/service/FilesBelow.hpp"

namespace karvex::rig {
namespace {

/// The path of a URL without its first slash (RFC 3986, 3.3).
std::string_view pathOf(std::string_view url) {
  url = url.substr(0, url.find_first_of("?#"));
  if (const auto scheme = url.find("://"); scheme != std::string_view::npos) {
    const auto slash = url.find('/', scheme + 3);
    url = slash == std::string_view::npos ? std::string_view() : url.substr(slash);
  }
  return url.starts_with('/') ? url.substr(1) : url;
}

/// What is no escape stays as it is.
std::string withoutEscapes(std::string_view text) {
  std::string plain;
  for (std::size_t at = 0; at < text.size(); ++at) {
    unsigned char byte = 0;
    const bool isEscape =
        text[at] == '%' && at + 2 < text.size() &&
        std::from_chars(text.data() + at + 1, text.data() + at + 3, byte, 16).ptr == text.data() + at + 3;
    plain += isEscape ? static_cast<char>(byte) : text[at];
    at += isEscape ? 2U : 0U;
  }
  return plain;
}

}  // namespace

std::optional<FoundFirmware> FirmwareFolder::find(std::string_view url) const {
  constexpr std::size_t longestPath = 4096;  // No system takes a longer one.
  auto place = pathOf(url);
  if (place.size() > longestPath) {
    return std::nullopt;
  }
  while (!place.empty()) {
    if (auto file = fileBelow(root_, withoutEscapes(place))) {
      return FoundFirmware{.file = std::move(*file), .place = std::string(place)};
    }
    const auto slash = place.find('/');
    place = slash == std::string_view::npos ? std::string_view() : place.substr(slash + 1);
  }
  return std::nullopt;
}

}  // namespace karvex::rig
