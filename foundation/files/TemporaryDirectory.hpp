#pragma once

#include <filesystem>

namespace karvex::foundation {

/// A directory below the system's temporary one (TMPDIR, else /tmp) that only this user can enter. It goes
/// with the object, with all that it holds; also when std::exit() or std::quick_exit() ends the program
/// before the object does. A program that a signal ends leaves it behind.
class TemporaryDirectory {
 public:
  /// Throws std::system_error.
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
  int descriptor_ = -1;
};

}  // namespace karvex::foundation
