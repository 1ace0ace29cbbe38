#pragma once

#include <filesystem>
#include <string_view>
#include <system_error>

namespace karvex::foundation {

/// Replaces the file as a whole, so that no reader sees half of it and a crash leaves the old one or the new
/// one. The text goes through a file beside it (`.new`), which is readable for the user alone: anyone who
/// replaces the same file must take turns. If it fails, the old file is as it was.
///
/// Thread-safe: yes, for different files.
/// Realtime-safe: no, it waits for the disk.
std::error_code replaceFile(const std::filesystem::path& file, std::string_view text);

}  // namespace karvex::foundation
