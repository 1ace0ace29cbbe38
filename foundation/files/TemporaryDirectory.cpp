#include "foundation/files/TemporaryDirectory.hpp"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <set>
#include <string>
#include <system_error>

namespace karvex::foundation {
namespace {

void removeAll(const std::filesystem::path& path) {
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}

/// The directories that there are. Neither std::exit() nor std::quick_exit() destroys an object of a function
/// that is under way, and the loader ends the program like that.
class Directories {
 public:
  /// Never destroyed: other threads go on while the program ends.
  static Directories& ofThisProgram() {
    static auto* const directories = new Directories;
    static const bool isRegistered =  // Without it, a program that ends early leaves its files.
        std::atexit(removeAtEnd) == 0 && std::at_quick_exit(removeAtEnd) == 0;
    static_cast<void>(isRegistered);
    return *directories;
  }

  void add(const std::filesystem::path& path) {
    const std::lock_guard lock(mutex_);
    paths_.insert(path);
  }

  void remove(const std::filesystem::path& path) {
    const std::lock_guard lock(mutex_);
    removeAll(path);
    paths_.erase(path);
  }

 private:
  static void removeAtEnd() { ofThisProgram().removeThem(); }

  void removeThem() {
    const std::lock_guard lock(mutex_);
    for (const auto& path : paths_) {
      removeAll(path);
    }
  }

  std::mutex mutex_;
  std::set<std::filesystem::path> paths_;
};

std::filesystem::path placeOfDirectories() {
  std::error_code error;
  auto place = std::filesystem::temp_directory_path(error);
  if (error) {
    const char* named = std::getenv("TMPDIR");  // NOLINT(concurrency-mt-unsafe): nobody sets the environment
    throw std::system_error(error, named != nullptr ? std::string("TMPDIR is ") + named
                                                    : std::string("No directory for temporary files"));
  }
  return place;
}

}  // namespace

TemporaryDirectory::TemporaryDirectory() {
  std::string name = placeOfDirectories() / "karvex-XXXXXX";
  if (::mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), name);
  }
  path_ = name;
  Directories::ofThisProgram().add(path_);
  // systemd-tmpfiles clears away what has been old for days, but not below a directory that is locked
  // (flock).
  descriptor_ = ::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor_ >= 0) {
    ::flock(descriptor_, LOCK_SH | LOCK_NB);
  }
}

TemporaryDirectory::~TemporaryDirectory() {
  Directories::ofThisProgram().remove(path_);
  if (descriptor_ >= 0) {
    ::close(descriptor_);
  }
}

}  // namespace karvex::foundation
