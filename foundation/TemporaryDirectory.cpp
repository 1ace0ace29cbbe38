#include "foundation/TemporaryDirectory.hpp"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

namespace karvex::foundation {

TemporaryDirectory::TemporaryDirectory() {
  std::string name = std::filesystem::temp_directory_path() / "karvex-XXXXXX";
  if (::mkdtemp(name.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), name);
  }
  path_ = name;
  // systemd-tmpfiles clears away what has been old for days, but not below a directory that is locked
  // (flock).
  descriptor_ = ::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor_ >= 0) {
    ::flock(descriptor_, LOCK_SH | LOCK_NB);
  }
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
  if (descriptor_ >= 0) {
    ::close(descriptor_);
  }
}

}  // namespace karvex::foundation
