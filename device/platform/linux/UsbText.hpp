#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// The strings in a USB device's descriptors are whatever its maker, or an attacker's firmware, put there.
/// The kernel hands them on as it finds them, in UTF-8. What the rest of the program sees of them is
/// well-formed UTF-8 (RFC 3629) without control characters (U+0000 to U+001F, U+007F to U+009F) and of
/// bounded length. Pure functions.
namespace karvex::device {

/// In UTF-16 code units: the length of a string descriptor is one byte, and its first two bytes are not text
/// (USB 2.0, 9.6.7).
inline constexpr std::size_t longestUsbString = 126;

/// The number, unchanged, or nothing if it isn't clean text of at most longestUsbString units. Names are made
/// of a serial number and boards are found by it, so a mended one would be the name of no board, or of
/// another one.
std::optional<std::string> serialNumberFromUsb(std::string_view raw);

/// The text for people to read: each offending byte or control character becomes U+FFFD, and what exceeds
/// longestUsbString units is cut off.
std::string productNameFromUsb(std::string_view raw);

}  // namespace karvex::device
