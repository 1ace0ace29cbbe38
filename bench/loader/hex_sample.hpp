#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <random>

namespace karvex::loader {

/// The bytes of a sample, from address 0 on: the same for each run, and without a pattern that a branch
/// predictor could learn.
class sample_bytes {
 public:
  std::uint8_t next() { return static_cast<std::uint8_t>(random_() >> 24U); }

 private:
  std::mt19937 random_;
};

/// Writes `size` bytes (a multiple of 16, at most 16 MiB) as a compiler's tool chain does: records of 16
/// bytes, a linear address in front of each 64 KiB, and an end record.
void write_hex_sample(const std::filesystem::path& path, std::size_t size);

/// True when the picture holds the sample and nothing else.
bool image_is_sample(std::size_t size);

}  // namespace karvex::loader
