#pragma once

#include <cstdint>

/// The Intel HEX reader: one text file into the firmware picture.
namespace karvex::loader {

// Results of read_intel_hex below 0.
inline constexpr std::int32_t hex_file_unreadable = -1;
inline constexpr std::int32_t hex_line_malformed = -2;

/// Clears the picture and reads the file into it (Intel Hexadecimal Object File Format, revision A: record
/// types 0, 1, 2 and 4; others are passed over). A microcontroller must have been selected. Returns how many
/// data bytes the records carried, overlaps counted again, or one of the two failures; behind a failure the
/// picture holds what was read until then. Messages go to standard output.
std::int32_t read_intel_hex(const char* path);

}  // namespace karvex::loader
