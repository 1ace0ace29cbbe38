#include "loader/halfkay_report.hpp"

#include <algorithm>

#include "loader/firmware_image.hpp"

namespace karvex::loader {
namespace {

constexpr std::size_t short_header = 2;
constexpr std::size_t long_header = 64;

bool has_long_header(std::int32_t block_size) {
  return block_size == 512 || block_size == 1024;
}

}  // namespace

std::size_t report_length(std::int32_t block_size) {
  return static_cast<std::size_t>(block_size) + (has_long_header(block_size) ? long_header : short_header);
}

std::optional<report_layout> layout_for(std::int32_t code_size, std::int32_t block_size) {
  const std::size_t length = report_length(block_size);
  if (code_size < 0x10000 && block_size <= 256) {
    return report_layout{address_form::bits_0_to_15, short_header, length};
  }
  if (has_long_header(block_size)) {
    return report_layout{address_form::bits_0_to_23, long_header, length};
  }
  if (block_size == 256) {
    return report_layout{address_form::bits_8_to_23, short_header, length};
  }
  return std::nullopt;
}

void build_block_report(const report_layout& layout, std::uint32_t address, std::span<std::uint8_t> report) {
  std::fill_n(report.begin(), layout.data_offset, std::uint8_t{0});
  const std::uint32_t shown = layout.address == address_form::bits_8_to_23 ? address >> 8U : address;
  report[0] = static_cast<std::uint8_t>(shown);
  report[1] = static_cast<std::uint8_t>(shown >> 8U);
  if (layout.address == address_form::bits_0_to_23) {
    report[2] = static_cast<std::uint8_t>(shown >> 16U);
  }
  const auto block_length = static_cast<std::uint32_t>(layout.length - layout.data_offset);
  copy_block(address, block_length, report.data() + layout.data_offset);
}

void build_boot_report(std::span<std::uint8_t> report) {
  std::fill(report.begin(), report.end(), std::uint8_t{0});
  std::fill_n(report.begin(), 3, std::uint8_t{0xFF});
}

}  // namespace karvex::loader
