#pragma once

#include <cstddef>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace karvex::app {

/// The last failures that a user was shown, one to a line, for anyone who asks later. A file that can't be
/// read or written is as good as none: no failure may come of noting one.
class FailureLog {
 public:
  static constexpr std::size_t mostLines = 20;
  static constexpr std::size_t longestLine = 400;  ///< in bytes

  /// Without a file nothing is kept. Its folder is made when something is noted.
  explicit FailureLog(std::optional<std::filesystem::path> file) : file_(std::move(file)) {}

  /// Adds a line; the oldest goes. Line ends become blanks, and what doesn't belong in a line is replaced.
  /// Thread-safe: yes.
  /// Realtime-safe: no, it reads and writes files.
  void add(std::string_view time, std::string_view failure);

  /// The lines, oldest first, whatever somebody else may have put into the file.
  /// Thread-safe: yes.
  /// Realtime-safe: no, it reads a file.
  std::vector<std::string> lines() const;

 private:
  std::optional<std::filesystem::path> file_;
  std::mutex mutex_;
};

/// Where the log of this user is, from the values of XDG_STATE_HOME and HOME, of which either may be null. A
/// path that isn't absolute counts as none. Thread-safe: yes. Realtime-safe: no, it allocates.
std::optional<std::filesystem::path> standardFailureLogFile(const char* stateHome, const char* home);

/// The same from this process's environment.
/// Thread-safe: yes, as long as nobody sets the environment.
/// Realtime-safe: no, it allocates.
std::optional<std::filesystem::path> failureLogFile();

/// The time at this moment, as reports show it: "2026-11-23 22:44:41 UTC".
/// Thread-safe: yes.
/// Realtime-safe: no, it allocates.
std::string timeNow();

}  // namespace karvex::app
