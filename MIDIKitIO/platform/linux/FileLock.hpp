#pragma once

#include <filesystem>

namespace midikit::io::alsa {

/// A lock among programs: an empty file that one at a time holds. The kernel takes it back however its holder
/// ends, and an inotify watch is told that the file was closed.
class FileLock {
 public:
  enum class Patience { waits, asksOnce };

  /// Makes the file if need be; where that can't be, nobody can share anything, and the lock counts as held.
  /// Waiting is for locks that are held for moments.
  FileLock(const std::filesystem::path& file, Patience patience);
  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  /// Asks once more, if it isn't held.
  bool isHeld();

 private:
  bool tryTo(int operation);

  int descriptor_;
  bool isHeld_ = false;
};

}  // namespace midikit::io::alsa
