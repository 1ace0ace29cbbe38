#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

/// The reports that the HalfKay bootloader takes: what stands where in them. Nothing here touches a device.
namespace karvex::loader {

inline constexpr std::size_t longest_report = 1088;

/// How a block's address goes into the first bytes of its report, lowest byte first.
enum class address_form {
  bits_0_to_15,  ///< two bytes; flash below 64 KiB with small blocks
  bits_8_to_23,  ///< two bytes; more flash with blocks of 256, whose addresses end in a zero byte
  bits_0_to_23,  ///< three bytes
};

struct report_layout {
  address_form address;
  std::size_t data_offset;  ///< where the block begins; the bytes between are 0
  std::size_t length;       ///< the whole report
};

/// The length of a load's reports: of the blocks and of the report that reboots the board.
std::size_t report_length(std::int32_t block_size);

/// The layout for a target, or nothing if none fits its sizes.
std::optional<report_layout> layout_for(std::int32_t code_size, std::int32_t block_size);

/// Writes the report of the picture's block at `address` into the first layout.length bytes of `report`.
void build_block_report(const report_layout& layout, std::uint32_t address, std::span<std::uint8_t> report);

/// Fills the whole of `report` with the request to leave the bootloader.
void build_boot_report(std::span<std::uint8_t> report);

}  // namespace karvex::loader
