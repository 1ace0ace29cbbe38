#include "foundation/net/DownloadFile.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace karvex::foundation {

DownloadFile::DownloadFile(std::filesystem::path path)
    : path_(std::move(path)),
      descriptor_(::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600)) {
  if (descriptor_ < 0) {
    throw std::system_error(errno, std::generic_category());
  }
}

DownloadFile::~DownloadFile() {
  static_cast<void>(close());  // A file that couldn't be closed was not kept.
  if (!isKept_) {
    ::unlink(path_.c_str());
  }
}

std::error_code DownloadFile::write(std::string_view bytes) const {
  while (!bytes.empty()) {
    const auto written = ::write(descriptor_, bytes.data(), bytes.size());
    if (written >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      return {errno, std::generic_category()};
    }
  }
  return {};
}

std::error_code DownloadFile::keep() {
  const auto error = close();
  isKept_ = !error;
  return error;
}

std::error_code DownloadFile::close() {
  const int descriptor = std::exchange(descriptor_, -1);
  if (descriptor >= 0 && ::close(descriptor) != 0) {
    return {errno, std::generic_category()};
  }
  return {};
}

}  // namespace karvex::foundation
