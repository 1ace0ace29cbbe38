#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// The flat picture of the target's flash memory: what the firmware file says, and where it says nothing.
namespace karvex::loader {

inline constexpr std::size_t image_size = 0x1000000;  ///< 16 MiB, the reach of a 24-bit address

/// One byte per target address; any where the file wrote nothing.
extern std::array<std::uint8_t, image_size> image_bytes;
/// 1 where the file wrote the byte, else 0.
extern std::array<std::uint8_t, image_size> image_mask;

/// Makes the picture empty. Costs what has been written since the last time, not the whole picture.
void clear_image();

/// To be called before anything in the range is written.
void note_written(std::size_t address, std::size_t length);

/// True when the file wrote at least one byte of the range. The part of it beyond the picture has no data.
bool block_has_data(std::uint32_t address, std::uint32_t length);

/// True when every byte that the file wrote in the range is 0xFF, so also when it wrote none.
bool block_is_blank(std::uint32_t address, std::uint32_t length);

/// Copies the range, with 0xFF where the file wrote nothing. A range that reaches the end of the picture
/// comes out as 0xFF throughout.
void copy_block(std::uint32_t address, std::uint32_t length, std::uint8_t* destination);

}  // namespace karvex::loader
