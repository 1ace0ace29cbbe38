#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>

namespace karvex::rig {

/// Memory that is a file: what is written to it is there for the next program, however this one ends.
class KeptMemory {
 public:
  /// Makes the file, of zeros, if it isn't there. Throws std::runtime_error with a sentence for the user if it
  /// can't be used, or is there with another size.
  KeptMemory(const std::filesystem::path& file, std::size_t size);
  ~KeptMemory();
  KeptMemory(KeptMemory&& other) noexcept;
  KeptMemory& operator=(KeptMemory&&) = delete;

  std::span<std::uint8_t> bytes() const { return bytes_; }

 private:
  std::span<std::uint8_t> bytes_;
};

}  // namespace karvex::rig
