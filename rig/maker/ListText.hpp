#pragma once

#include <string>
#include <string_view>

namespace karvex::rig {

/// Any text in quotes, for a message: one line of printable ASCII, with what else there is as the escapes of
/// JSON, and cut where it is longer than anybody reads.
///
/// Thread-safe: yes.
/// Realtime-safe: no, it allocates.
std::string inQuotes(std::string_view text);

/// True if the text has a control character (U+0000 to U+001F, U+007F to U+009F). It must be UTF-8.
///
/// Thread-safe: yes.
/// Realtime-safe: yes.
bool hasControlCharacter(std::string_view text);

}  // namespace karvex::rig
