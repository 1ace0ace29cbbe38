#include "rig/KeptMemory.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

namespace karvex::rig {
namespace {

[[noreturn]] void refuse(const std::filesystem::path& file, const std::string& reason) {
  throw std::runtime_error(fmt::format("{} can't keep a board: {}", file.string(), reason));
}

/// Maps the file, which stays mapped after the descriptor is closed.
std::span<std::uint8_t> map(int descriptor, const std::filesystem::path& file, std::size_t size) {
  const auto length = static_cast<off_t>(size);
  struct stat status{};
  if (::fstat(descriptor, &status) == 0 && status.st_size != 0 && status.st_size != length) {
    refuse(file, "it is of another kind of board");
  }
  if (::ftruncate(descriptor, length) != 0) {
    refuse(file, std::generic_category().message(errno));
  }
  void* memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
  if (memory == MAP_FAILED) {
    refuse(file, std::generic_category().message(errno));
  }
  return {static_cast<std::uint8_t*>(memory), size};
}

}  // namespace

KeptMemory::KeptMemory(const std::filesystem::path& file, std::size_t size) {
  struct Descriptor {
    ~Descriptor() { ::close(number); }
    int number;
  };
  const Descriptor descriptor{::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600)};
  if (descriptor.number < 0) {
    refuse(file, std::generic_category().message(errno));
  }
  bytes_ = map(descriptor.number, file, size);
}

KeptMemory::KeptMemory(KeptMemory&& other) noexcept : bytes_(std::exchange(other.bytes_, {})) {}

KeptMemory::~KeptMemory() {
  if (!bytes_.empty()) {
    ::munmap(bytes_.data(), bytes_.size());
  }
}

}  // namespace karvex::rig
