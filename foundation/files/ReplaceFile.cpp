#include "foundation/files/ReplaceFile.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace karvex::foundation {

namespace fs = std::filesystem;

namespace {

std::error_code lastError() {
  return {errno, std::system_category()};
}

std::error_code writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const auto written = ::write(descriptor, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      return lastError();
    }
  }
  return ::fsync(descriptor) == 0 ? std::error_code() : lastError();
}

std::error_code writeFile(const fs::path& file, std::string_view text) {
  // Without O_NONBLOCK, a pipe of that name would be waited for.
  constexpr int flags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
  const int descriptor = ::open(file.c_str(), flags, 0600);
  if (descriptor < 0) {
    return lastError();
  }
  const auto failure = writeAll(descriptor, text);
  ::close(descriptor);
  return failure;
}

}  // namespace

std::error_code replaceFile(const fs::path& file, std::string_view text) {
  const fs::path fresh = file.string() + ".new";
  auto failure = writeFile(fresh, text);
  if (!failure) {
    fs::rename(fresh, file, failure);
  }
  if (failure) {
    std::error_code ignored;
    fs::remove(fresh, ignored);
  }
  return failure;
}

}  // namespace karvex::foundation
