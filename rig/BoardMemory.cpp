#include "rig/BoardMemory.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace karvex::rig {
namespace {

constexpr std::uint8_t erasedByte = 0xFF;

[[noreturn]] void fail(int error, const std::string& what) {
  throw std::system_error(error, std::generic_category(), what);
}

/// A file that is open for as long as this object lives.
class File {
 public:
  explicit File(const std::filesystem::path& path)
      : descriptor_(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
    if (descriptor_ < 0) {
      fail(errno, path.string());
    }
  }
  ~File() { ::close(descriptor_); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  int descriptor() const { return descriptor_; }
  /// In bytes. Throws std::system_error.
  std::size_t size() const {
    struct stat status{};
    if (::fstat(descriptor_, &status) != 0) {
      fail(errno, "fstat");
    }
    return static_cast<std::size_t>(status.st_size);
  }

 private:
  int descriptor_;
};

}  // namespace

BoardMemory::BoardMemory(std::size_t flashSize) : bytes_(static_cast<std::uint8_t*>(nullptr), flashSize + 1) {
  map(-1);
  std::ranges::fill(flash(), erasedByte);
}

BoardMemory::BoardMemory(std::size_t flashSize, const std::filesystem::path& path)
    : bytes_(static_cast<std::uint8_t*>(nullptr), flashSize + 1) {
  const File file(path);
  const auto size = file.size();
  if (size != 0 && size != bytes_.size()) {
    fail(EINVAL, path.string() + " is not the memory of such a board");
  }
  if (size == 0 && ::ftruncate(file.descriptor(), static_cast<off_t>(bytes_.size())) != 0) {
    fail(errno, path.string());
  }
  map(file.descriptor());
  if (size == 0) {
    std::ranges::fill(flash(), erasedByte);
  }
}

BoardMemory::~BoardMemory() {
  if (bytes_.data() != nullptr) {
    ::munmap(bytes_.data(), bytes_.size());
  }
}

BoardMemory::BoardMemory(BoardMemory&& other) noexcept : bytes_(std::exchange(other.bytes_, {})) {}

/// Without a descriptor, memory of this process.
void BoardMemory::map(int descriptor) {
  const int flags = MAP_SHARED | (descriptor < 0 ? MAP_ANONYMOUS : 0);
  void* mapped = ::mmap(nullptr, bytes_.size(), PROT_READ | PROT_WRITE, flags, descriptor, 0);
  if (mapped == MAP_FAILED) {
    fail(errno, "A board's memory can't be mapped");
  }
  bytes_ = {static_cast<std::uint8_t*>(mapped), bytes_.size()};
}

}  // namespace karvex::rig
