#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>

namespace midikit::core {

/// One Universal MIDI Packet: one to four 32-bit words. A plain value of 20 bytes.
class UMPPacket {
 public:
  static constexpr std::size_t maximumWords = 4;

  constexpr UMPPacket() = default;
  /// At most four words; more are left out.
  constexpr explicit UMPPacket(std::span<const std::uint32_t> words) {
    for (const std::uint32_t word : words.first(words.size() < maximumWords ? words.size() : maximumWords)) {
      words_[size_++] = word;
    }
  }
  constexpr UMPPacket(std::initializer_list<std::uint32_t> words)
      : UMPPacket(std::span<const std::uint32_t>(words.begin(), words.size())) {}

  constexpr std::size_t size() const { return size_; }
  constexpr std::uint32_t operator[](std::size_t index) const { return words_[index]; }
  constexpr const std::uint32_t* begin() const { return words_.data(); }
  constexpr const std::uint32_t* end() const { return words_.data() + size_; }
  constexpr std::span<const std::uint32_t> words() const { return {words_.data(), size_}; }

  friend constexpr bool operator==(const UMPPacket&, const UMPPacket&) = default;

 private:
  std::array<std::uint32_t, maximumWords> words_{};
  std::uint32_t size_ = 0;
};

}  // namespace midikit::core
