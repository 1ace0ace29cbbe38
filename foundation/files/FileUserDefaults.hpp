#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/files/UserDefaults.hpp"

namespace karvex::foundation {

/// User defaults in one file, which several programs may use at once. Each line is a key, "=" and a value;
/// control characters, "%" and "=" of a key are percent-encoded. Each operation reads the file anew. Who
/// stores holds a lock on a file beside it (`.lock`) from reading to replacing, and replaces the file as a
/// whole, so that no reader sees half of it and no program undoes what another one stores.
///
/// A file of more than `longestFile` bytes, or one that is no regular file, is none of ours: it reads as
/// empty and is left as it is. Keys of more than `longestKey` bytes are never there, nor stored.
class FileUserDefaults final : public UserDefaults {
 public:
  static constexpr std::size_t longestFile = 1 << 20;
  static constexpr std::size_t longestKey = 1024;

  /// The file and its folder are made when something is stored.
  explicit FileUserDefaults(std::filesystem::path file) : file_(std::move(file)) {}

  std::optional<std::int64_t> integer(std::string_view key) const override;
  void setInteger(std::string_view key, std::optional<std::int64_t> value) override;

 private:
  std::filesystem::path file_;
};

/// Where UserDefaults::standard() is, from the values of XDG_CONFIG_HOME and HOME. A path that isn't absolute
/// counts as none.
std::optional<std::filesystem::path> standardUserDefaultsFile(const char* configHome, const char* home);

}  // namespace karvex::foundation
