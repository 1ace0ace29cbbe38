#include "foundation/net/Url.hpp"

#include <curl/curl.h>

#include <algorithm>
#include <memory>

namespace karvex::foundation {
namespace {

// The locale has no say here, as it would in <cctype>.
bool isBetween(char first, char character, char last) {
  return first <= character && character <= last;
}

bool isHexDigit(char character) {
  return isBetween('0', character, '9') || isBetween('A', character, 'F') || isBetween('a', character, 'f');
}

/// Reserved and unreserved characters (RFC 3986, 2.2 and 2.3).
bool mayStandInUrl(char character) {
  constexpr std::string_view marks = ":/?#[]@!$&'()*+,;=-._~";
  return isBetween('0', character, '9') || isBetween('A', character, 'Z') || isBetween('a', character, 'z') ||
         marks.find(character) != std::string_view::npos;
}

bool beginsWith(std::string_view text, std::string_view lowerCase) {
  const auto toLower = [](char character) {
    return isBetween('A', character, 'Z') ? static_cast<char>(character - 'A' + 'a') : character;
  };
  return text.size() >= lowerCase.size() &&
         std::equal(lowerCase.begin(), lowerCase.end(), text.begin(),
                    [&toLower](char expected, char actual) { return expected == toLower(actual); });
}

using ParsedUrl = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

/// Null if the text is no absolute URL.
ParsedUrl parsed(const std::string& url) {
  ParsedUrl result(curl_url(), &curl_url_cleanup);
  if (result &&
      curl_url_set(result.get(), CURLUPART_URL, url.c_str(), CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK) {
    result.reset();
  }
  return result;
}

std::string partOf(const ParsedUrl& url, CURLUPart part) {
  char* text = nullptr;
  if (!url || curl_url_get(url.get(), part, &text, 0) != CURLUE_OK) {
    return {};
  }
  const std::unique_ptr<char, decltype(&curl_free)> owner(text, &curl_free);
  return text;
}

}  // namespace

bool isUrl(std::string_view text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '%') {
      if (at + 2 >= text.size() || !isHexDigit(text[at + 1]) || !isHexDigit(text[at + 2])) {
        return false;
      }
      at += 2;
    } else if (!mayStandInUrl(text[at])) {
      return false;
    }
  }
  return !text.empty();
}

bool isWebUrl(std::string_view text) {
  return beginsWith(text, "http://") || isSecureUrl(text);
}

bool isSecureUrl(std::string_view text) {
  return beginsWith(text, "https://");
}

std::string hostOf(const std::string& url) {
  return partOf(parsed(url), CURLUPART_HOST);
}

std::string withoutCredentials(const std::string& url) {
  const auto parts = parsed(url);
  if (parts) {
    curl_url_set(parts.get(), CURLUPART_USER, nullptr, 0);
    curl_url_set(parts.get(), CURLUPART_PASSWORD, nullptr, 0);
  }
  return partOf(parts, CURLUPART_URL);
}

}  // namespace karvex::foundation
