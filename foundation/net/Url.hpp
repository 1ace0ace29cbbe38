#pragma once

#include <string>
#include <string_view>

/// What can be told from the text of a URL alone. Any thread.
namespace karvex::foundation {

/// True if the text can stand as a URL as it is: characters and percent escapes that a URI may have (RFC
/// 3986, 2), and not empty. Nothing is encoded on the caller's behalf, so a blank makes it false. A reference
/// without a scheme ("ab/c.hex") is one.
bool isUrl(std::string_view text);

/// True if the text begins with http:// or https://, in capitals or not (RFC 3986, 3.1).
bool isWebUrl(std::string_view text);

/// True if the text begins with https://, in any letter case.
bool isSecureUrl(std::string_view text);

/// The host of an absolute URL. Empty if it has none.
std::string hostOf(const std::string& url);

/// The URL without the user and the password that it may carry. Empty if the text is no absolute URL.
std::string withoutCredentials(const std::string& url);

}  // namespace karvex::foundation
