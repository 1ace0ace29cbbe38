#include "rig/service/FilesBelow.hpp"

#include <algorithm>
#include <fstream>
#include <system_error>
#include <utility>

namespace karvex::rig {

namespace fs = std::filesystem;

std::optional<fs::path> fileBelow(const fs::path& directory, const std::string& name) {
  if (name.find('\0') != std::string::npos) {  // where the system would take the name to end
    return std::nullopt;
  }
  std::error_code error;
  const auto root = fs::canonical(directory, error);
  auto file = error ? fs::path() : fs::canonical(root / name, error);
  if (error || !fs::is_regular_file(file, error)) {
    return std::nullopt;
  }
  const bool isBelow = std::mismatch(root.begin(), root.end(), file.begin(), file.end()).first == root.end();
  return isBelow ? std::optional(std::move(file)) : std::nullopt;
}

std::optional<std::string> contentsOf(const fs::path& file) {
  std::error_code error;
  std::ifstream stream(file, std::ios::binary);
  const auto size = fs::file_size(file, error);
  if (error) {
    return std::nullopt;
  }
  std::string contents(size, '\0');  // At once: one that grew would take a multiple of the memory.
  const bool isRead = stream.read(contents.data(), static_cast<std::streamsize>(size)).good();
  return isRead ? std::optional(std::move(contents)) : std::nullopt;
}

}  // namespace karvex::rig
