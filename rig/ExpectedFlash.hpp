#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include "rig/BoardKind.hpp"

namespace karvex::rig {

/// An Intel HEX file as the rig reads it.
struct HexReading {
  std::vector<std::uint8_t> flash;  ///< what a board's flash holds after a load
  std::size_t badLine = 0;          ///< the malformed line, from 1, at which the reading ended; 0: none
  std::uint64_t dataBytes = 0;      ///< of all data records, overlaps counted again
  std::optional<std::uint64_t> firstBeyond;  ///< the first address with data outside the board's flash
  bool hasEndRecord = false;
};

/// Reads the file for a board. Nothing if it can't be read.
///
/// Thread-safe: yes.
/// Realtime-safe: no, it reads a file.
std::optional<HexReading> readHex(const std::filesystem::path& file, const BoardKind& kind);

/// What a board's flash must hold behind a load of `file`: the rig's own reading of the Intel HEX file, which
/// shares nothing with the loader's. Nothing if the file can't be read or is malformed. Data that lie outside
/// the board's flash are no part of it.
std::optional<std::vector<std::uint8_t>> expectedFlash(const std::filesystem::path& file,
                                                       const BoardKind& kind);

}  // namespace karvex::rig
