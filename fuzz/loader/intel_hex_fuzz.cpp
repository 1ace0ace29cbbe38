// Feeds the Intel HEX reader with any bytes, for every microcontroller: the first byte chooses one, the rest
// is the file. Started with -runs=1000000 it takes about a minute.

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "loader/firmware_image.hpp"
#include "loader/intel_hex.hpp"
#include "loader/mcu_table.hpp"
#include "loader/platform/host.hpp"

namespace {

using namespace karvex::loader;

void check(bool holds, const char* what) {
  if (!holds) {
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
  }
}

/// A file in memory that has a path.
class MemoryFile {
 public:
  MemoryFile()
      : descriptor_(memfd_create("fuzz", 0)), path_("/proc/self/fd/" + std::to_string(descriptor_)) {}
  const char* path() const { return path_.c_str(); }
  void fill(const std::uint8_t* data, std::size_t size) const {
    check(ftruncate(descriptor_, 0) == 0 && pwrite(descriptor_, data, size, 0) == static_cast<ssize_t>(size),
          "file");
  }

 private:
  int descriptor_;
  std::string path_;
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  install_host({.log = [](void*, const char*) {}, .print = [](void*, const char*) {}});
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const MemoryFile file;
  if (size == 0) {
    return -1;
  }
  const auto mcus = mcu_table();
  select_mcu(mcus[data[0] % mcus.size()].name);
  file.fill(data + 1, size - 1);
  const auto result = read_intel_hex(file.path());
  check(result >= hex_line_malformed && result != hex_file_unreadable,
        "the result is a count or a malformed line");
  check(result <= static_cast<std::int32_t>(size / 2), "no more bytes than the file has digits for");
  check(image_mask.back() == 0, "the last byte of the picture is never written");
  return 0;
}
