#include "app/FailureLog.hpp"

#include <fcntl.h>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>

#include "foundation/files/ReplaceFile.hpp"
#include "foundation/text/Utf8.hpp"
#include "ui/LineText.hpp"
#include "ui/console/StyledText.hpp"

namespace karvex::app {
namespace {

namespace fs = std::filesystem;

/// A file that has grown beyond this is none of ours.
constexpr std::uintmax_t longestFile = 1 << 16;

/// Held by one program at a time while it replaces the file.
class Turn {
 public:
  explicit Turn(const fs::path& file)
      : descriptor_(
            ::open((file.native() + ".lock").c_str(), O_CREAT | O_RDWR | O_CLOEXEC | O_NOFOLLOW, 0600)) {
    if (descriptor_ >= 0) {
      ::flock(descriptor_, LOCK_EX);
    }
  }
  ~Turn() {
    if (descriptor_ >= 0) {
      ::close(descriptor_);
    }
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

 private:
  int descriptor_;
};

/// Cut ahead of the character that would be too much.
std::string cleanLine(std::string_view text) {
  std::string line(text);
  std::ranges::replace(line, '\n', ' ');
  return std::string(foundation::beginningOf(ui::lineOf(line), FailureLog::longestLine));
}

std::vector<std::string> linesOf(const fs::path& file) {
  std::error_code error;
  std::vector<std::string> lines;
  if (!fs::is_regular_file(file, error) || fs::file_size(file, error) > longestFile) {
    return lines;
  }
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(cleanLine(line));
  }
  const auto most = static_cast<std::ptrdiff_t>(FailureLog::mostLines);
  lines.erase(lines.begin(), lines.end() - std::min(most, std::ssize(lines)));
  return lines;
}

}  // namespace

void FailureLog::add(std::string_view time, std::string_view failure) {
  if (!file_) {
    return;
  }
  const std::lock_guard lock(mutex_);
  std::error_code ignored;
  fs::create_directories(file_->parent_path(), ignored);
  const Turn turn(*file_);
  auto lines = linesOf(*file_);
  lines.push_back(cleanLine(fmt::format("{} {}", time, failure)));
  std::string text;
  for (const auto& line : lines) {  // One more than the most, which the next reader passes over.
    text += line + '\n';
  }
  ignored = foundation::replaceFile(*file_, text);
}

std::vector<std::string> FailureLog::lines() const {
  return file_ ? linesOf(*file_) : std::vector<std::string>();
}

std::optional<fs::path> standardFailureLogFile(const char* stateHome, const char* home) {
  const auto isPlace = [](const char* path) { return path != nullptr && *path == '/'; };
  constexpr auto name = "karvex/failures.log";
  if (isPlace(stateHome)) {
    return fs::path(stateHome) / name;
  }
  return isPlace(home) ? std::optional(fs::path(home) / ".local/state" / name) : std::nullopt;
}

std::optional<fs::path> failureLogFile() {
  // NOLINTNEXTLINE(concurrency-mt-unsafe)
  return standardFailureLogFile(std::getenv("XDG_STATE_HOME"), std::getenv("HOME"));
}

std::string timeNow() {
  const auto now = std::chrono::time_point_cast<std::chrono::seconds>(std::chrono::system_clock::now());
  return fmt::format("{:%F %T} UTC", fmt::gmtime(std::chrono::system_clock::to_time_t(now)));
}

}  // namespace karvex::app
