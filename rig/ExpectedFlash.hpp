#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include "rig/BoardKind.hpp"

namespace karvex::rig {

/// What a board's flash must hold behind a load of `file`: the rig's own reading of the Intel HEX file, which
/// shares nothing with the loader's. Nothing if the file can't be read or is malformed. Data that lie outside
/// the board's flash are no part of it.
std::optional<std::vector<std::uint8_t>> expectedFlash(const std::filesystem::path& file,
                                                       const BoardKind& kind);

}  // namespace karvex::rig
