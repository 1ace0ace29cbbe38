#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>

namespace karvex::rig {

/// What a board keeps when nobody looks: its flash, and whether it is in its bootloader. New memory is
/// erased, and the board is in its firmware. In a file, it outlives the process however that ends: what is
/// written is in the file at once. One process at a time uses a file.
class BoardMemory {
 public:
  /// In this process alone. Throws std::system_error if there is no room.
  explicit BoardMemory(std::size_t flashSize);
  /// In the file, which is made if it isn't there. Throws std::system_error if it can't be used, or holds a
  /// flash of another size.
  BoardMemory(std::size_t flashSize, const std::filesystem::path& file);
  ~BoardMemory();
  BoardMemory(BoardMemory&& other) noexcept;
  BoardMemory& operator=(BoardMemory&&) = delete;

  std::span<std::uint8_t> flash() { return bytes_.first(bytes_.size() - 1); }
  std::span<const std::uint8_t> flash() const { return bytes_.first(bytes_.size() - 1); }
  bool isInBootloader() const { return bytes_.back() != 0; }
  void setInBootloader(bool isInBootloader) { bytes_.back() = isInBootloader ? 1 : 0; }

 private:
  void map(int descriptor);

  std::span<std::uint8_t> bytes_;  ///< mapped: the flash, and a byte for the bootloader
};

}  // namespace karvex::rig
