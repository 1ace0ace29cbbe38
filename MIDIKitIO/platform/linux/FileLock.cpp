#include "MIDIKitIO/platform/linux/FileLock.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

namespace midikit::io::alsa {

/// Open for writing, or its closing wouldn't be told of.
FileLock::FileLock(const std::filesystem::path& file, Patience patience)
    : descriptor_(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600)) {
  isHeld_ = tryTo(patience == Patience::waits ? LOCK_EX : LOCK_EX | LOCK_NB);
}

FileLock::~FileLock() {
  if (descriptor_ >= 0) {
    ::close(descriptor_);
  }
}

bool FileLock::isHeld() {
  isHeld_ = isHeld_ || tryTo(LOCK_EX | LOCK_NB);
  return isHeld_;
}

bool FileLock::tryTo(int operation) {
  int result = descriptor_ >= 0 ? ::flock(descriptor_, operation) : 0;
  while (result != 0 && errno == EINTR) {
    result = ::flock(descriptor_, operation);
  }
  return result == 0;
}

}  // namespace midikit::io::alsa
