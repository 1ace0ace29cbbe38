#include "bench/loader/hex_sample.hpp"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <fstream>
#include <numeric>
#include <string>
#include <vector>

#include "loader/firmware_image.hpp"

namespace karvex::loader {
namespace {

constexpr std::size_t record_size = 16;

std::string record_text(std::uint8_t type, std::uint16_t address, const std::vector<std::uint8_t>& data) {
  std::vector<std::uint8_t> fields = {static_cast<std::uint8_t>(data.size()),
                                      static_cast<std::uint8_t>(address >> 8U),
                                      static_cast<std::uint8_t>(address & 0xFFU), type};
  fields.insert(fields.end(), data.begin(), data.end());
  fields.push_back(static_cast<std::uint8_t>(0U - std::accumulate(fields.begin(), fields.end(), 0U)));
  return fmt::format(":{:02X}\n", fmt::join(fields, ""));
}

std::string linear_address(std::size_t address) {
  return record_text(4, 0,
                     {static_cast<std::uint8_t>(address >> 24U), static_cast<std::uint8_t>(address >> 16U)});
}

}  // namespace

void write_hex_sample(const std::filesystem::path& path, std::size_t size) {
  std::ofstream file;
  file.exceptions(std::ios::failbit | std::ios::badbit);
  file.open(path, std::ios::binary);
  sample_bytes bytes;
  std::vector<std::uint8_t> data(record_size);
  for (std::size_t address = 0; address < size; address += record_size) {
    if (address % 0x10000 == 0) {
      file << linear_address(address);
    }
    std::generate(data.begin(), data.end(), [&] { return bytes.next(); });
    file << record_text(0, static_cast<std::uint16_t>(address & 0xFFFFU), data);
  }
  file << record_text(1, 0, {});
  file.close();
}

bool image_is_sample(std::size_t size) {
  sample_bytes bytes;
  const auto length = static_cast<std::ptrdiff_t>(size);
  return std::all_of(image_bytes.begin(), image_bytes.begin() + length,
                     [&](std::uint8_t byte) { return byte == bytes.next(); }) &&
         std::count(image_mask.begin(), image_mask.begin() + length, 1) == length &&
         std::count(image_mask.begin() + length, image_mask.end(), 0) ==
             static_cast<std::ptrdiff_t>(image_size) - length;
}

}  // namespace karvex::loader
