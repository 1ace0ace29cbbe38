#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace karvex::rig {

/// The regular file of that name below the directory, by its canonical path. Links are followed first, so
/// nothing leads out of the directory. Nothing if there is none. The name may be any text.
///
/// Thread-safe: yes.
/// Realtime-safe: no, it asks the file system.
std::optional<std::filesystem::path> fileBelow(const std::filesystem::path& directory,
                                               const std::string& name);

/// The contents of the regular file. Nothing if it can't be read to the end that it had at first.
///
/// Thread-safe: yes.
/// Realtime-safe: no, it reads a file.
std::optional<std::string> contentsOf(const std::filesystem::path& file);

}  // namespace karvex::rig
