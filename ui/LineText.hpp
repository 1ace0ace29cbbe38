#pragma once

#include <string>
#include <string_view>

/// What a device, the service or a failure is called, as text for one line of a front. Pure functions.
namespace karvex::ui {

/// True for a character that doesn't belong in a line: it would steer a terminal, end the line, turn the
/// direction of reading, or be there without being seen. The joiners, which letters and emoji are put
/// together with, do belong. Thread-safe: yes. Realtime-safe: yes.
bool isUnsafeInLine(char32_t character);

/// The text with each such character, and each byte that is no UTF-8, replaced by U+FFFD.
/// Thread-safe: yes.
/// Realtime-safe: no, it allocates.
std::string lineOf(std::string_view text);

}  // namespace karvex::ui
