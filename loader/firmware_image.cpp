#include "loader/firmware_image.hpp"

#include <algorithm>
#include <cstring>

namespace karvex::loader {
namespace {

constexpr std::uint8_t erased = 0xFF;

/// Every address that has been written since the picture was cleared is in this range.
struct {
  std::size_t begin = image_size;
  std::size_t end = 0;
} written;

/// How much of the range lies inside the picture.
std::size_t length_inside(std::uint32_t address, std::uint32_t length) {
  return address < image_size ? std::min<std::size_t>(length, image_size - address) : 0;
}

}  // namespace

std::array<std::uint8_t, image_size> image_bytes;
std::array<std::uint8_t, image_size> image_mask;

void clear_image() {
  if (written.begin < written.end) {
    std::memset(image_mask.data() + written.begin, 0, written.end - written.begin);
  }
  written = {};
}

void note_written(std::size_t address, std::size_t length) {
  written.begin = std::min(written.begin, address);
  written.end = std::max(written.end, address + length);
}

bool block_has_data(std::uint32_t address, std::uint32_t length) {
  const std::size_t inside = length_inside(address, length);
  return inside != 0 && std::memchr(image_mask.data() + address, 1, inside) != nullptr;
}

bool block_is_blank(std::uint32_t address, std::uint32_t length) {
  const std::size_t end = address + length_inside(address, length);
  for (std::size_t i = address; i < end; ++i) {
    if (image_mask[i] != 0 && image_bytes[i] != erased) {
      return false;
    }
  }
  return true;
}

void copy_block(std::uint32_t address, std::uint32_t length, std::uint8_t* destination) {
  if (std::uint64_t{address} + length >= image_size) {
    std::memset(destination, erased, length);
    return;
  }
  for (std::uint32_t i = 0; i < length; ++i) {
    destination[i] = image_mask[address + i] != 0 ? image_bytes[address + i] : erased;
  }
}

}  // namespace karvex::loader
