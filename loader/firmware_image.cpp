#include "loader/firmware_image.hpp"

#include <algorithm>
#include <cstring>

namespace karvex::loader {
namespace {

constexpr std::uint8_t erased = 0xFF;

/// How much of the range lies inside the picture.
std::size_t length_inside(std::uint32_t address, std::uint32_t length) {
  return address < image_size ? std::min<std::size_t>(length, image_size - address) : 0;
}

}  // namespace

std::array<std::uint8_t, image_size> image_bytes;
std::array<std::uint8_t, image_size> image_mask;

void clear_image() {
  image_bytes.fill(erased);
  image_mask.fill(0);
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
  } else {
    // A byte that the file didn't write has been 0xFF since the picture was cleared.
    std::memcpy(destination, image_bytes.data() + address, length);
  }
}

}  // namespace karvex::loader
