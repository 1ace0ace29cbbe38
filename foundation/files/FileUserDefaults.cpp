#include "foundation/files/FileUserDefaults.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <system_error>
#include <utility>
#include <vector>

#include "foundation/Log.hpp"
#include "foundation/files/ReplaceFile.hpp"
#include "foundation/text/HexText.hpp"

namespace karvex::foundation {

namespace fs = std::filesystem;

namespace {

std::error_code lastError() {
  return {errno, std::system_category()};
}

/// An open file, or the error that kept it from being opened.
class OpenFile {
 public:
  OpenFile(const fs::path& file, int flags)
      : descriptor_(::open(file.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0600)) {}
  ~OpenFile() {
    if (descriptor_ >= 0) {
      ::close(descriptor_);
    }
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;

  bool isOpen() const { return descriptor_ >= 0; }

  /// Waits for another program, or another thread, that holds the lock.
  bool lock() const {
    int result = -1;
    do {
      result = ::flock(descriptor_, LOCK_EX);
    } while (result != 0 && errno == EINTR);
    return result == 0;
  }

  /// All of a regular file; none for another kind of file and for one of more than `limit` bytes.
  std::optional<std::string> read(std::size_t limit) const {
    struct stat status{};
    if (::fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode) ||
        static_cast<std::size_t>(status.st_size) > limit) {
      return std::nullopt;
    }
    std::string content(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t used = 0;
    while (used < content.size()) {
      const auto count = ::read(descriptor_, content.data() + used, content.size() - used);
      if (count > 0) {
        used += static_cast<std::size_t>(count);
      } else if (count == 0) {
        content.resize(used);
      } else if (errno != EINTR) {
        return std::nullopt;
      }
    }
    return content;
  }

 private:
  int descriptor_;
};

/// The key as the file has it, with the "=" after it.
std::string lineStart(std::string_view key) {
  const auto isKept = [](char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte >= 0x20 && byte != 0x7F && character != '%' && character != '=';
  };
  return percentEncoded(key, isKept) + '=';
}

std::vector<std::string_view> linesOf(std::string_view content) {
  std::vector<std::string_view> lines;
  while (!content.empty()) {
    const auto end = std::min(content.find('\n'), content.size());
    lines.push_back(content.substr(0, end));
    content.remove_prefix(std::min(end + 1, content.size()));
  }
  return lines;
}

/// The content with the key's value replaced, everything else as it was.
std::string replaced(std::string_view content, const std::string& start, std::optional<std::int64_t> value) {
  std::string text;
  for (const auto line : linesOf(content)) {
    if (!line.starts_with(start)) {
      text.append(line).append("\n");
    }
  }
  if (value) {
    text.append(start).append(std::to_string(*value)).append("\n");
  }
  return text;
}

/// What the file holds: an empty text if it isn't there, none if it is none of ours.
std::optional<std::string> contentOf(const fs::path& path) {
  const OpenFile file(path, O_RDONLY);
  if (!file.isOpen()) {
    return errno == ENOENT ? std::optional<std::string>("") : std::nullopt;
  }
  return file.read(FileUserDefaults::longestFile);
}

std::error_code store(const fs::path& path, const std::string& start, std::optional<std::int64_t> value) {
  std::error_code failure;
  fs::create_directories(path.parent_path(), failure);
  const OpenFile lock(path.string() + ".lock", O_RDWR | O_CREAT | O_NOFOLLOW);
  if (!lock.isOpen() || !lock.lock()) {
    return lastError();
  }
  const auto content = contentOf(path);
  if (!content) {
    return std::make_error_code(std::errc::not_supported);
  }
  const auto text = replaced(*content, start, value);
  return text.size() <= FileUserDefaults::longestFile ? replaceFile(path, text)
                                                      : std::make_error_code(std::errc::file_too_large);
}

/// Where nothing is kept.
class NoUserDefaults final : public UserDefaults {
 public:
  std::optional<std::int64_t> integer(std::string_view /*key*/) const override { return std::nullopt; }
  void setInteger(std::string_view key, std::optional<std::int64_t> /*value*/) override {
    log::debug("User defaults are not kept: there is no home directory for " + std::string(key));
  }
};

}  // namespace

std::optional<std::int64_t> FileUserDefaults::integer(std::string_view key) const {
  const auto content = key.size() <= longestKey ? contentOf(file_) : std::nullopt;
  const auto start = lineStart(key);
  for (const auto line : linesOf(content ? *content : std::string_view())) {
    if (line.starts_with(start)) {
      const auto text = line.substr(start.size());
      std::int64_t value = 0;
      const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
      const bool isInteger = error == std::errc() && end == text.data() + text.size();
      return isInteger ? std::optional(value) : std::nullopt;
    }
  }
  return std::nullopt;
}

void FileUserDefaults::setInteger(std::string_view key, std::optional<std::int64_t> value) {
  const auto failure = key.size() <= longestKey ? store(file_, lineStart(key), value)
                                                : std::make_error_code(std::errc::argument_list_too_long);
  if (failure) {
    log::debug("User defaults are not kept: " + file_.string() + ": " + failure.message());
  }
}

std::optional<fs::path> standardUserDefaultsFile(const char* configHome, const char* home) {
  const fs::path name = fs::path("karvex") / "defaults";
  if (configHome != nullptr && fs::path(configHome).is_absolute()) {
    return fs::path(configHome) / name;
  }
  if (home != nullptr && fs::path(home).is_absolute()) {
    return fs::path(home) / ".config" / name;
  }
  return std::nullopt;
}

std::shared_ptr<UserDefaults> UserDefaults::standard() {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody sets the environment
  if (const auto file = standardUserDefaultsFile(std::getenv("XDG_CONFIG_HOME"), std::getenv("HOME"))) {
    return std::make_shared<FileUserDefaults>(*file);
  }
  return std::make_shared<NoUserDefaults>();
}

}  // namespace karvex::foundation
