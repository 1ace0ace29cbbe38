#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace midikit::core {

/// The bytes so far of a system exclusive message that arrives in pieces. Empty means that no message is
/// under way. Not thread-safe.
class SysExBuffer {
 public:
  bool empty() const { return bytes_.empty(); }
  std::span<const std::uint8_t> bytes() const { return bytes_; }

  /// Puts a piece behind the others. A message that grows beyond `limit` bytes is dropped.
  void append(std::span<const std::uint8_t> piece, std::size_t limit) {
    if (piece.size() > limit - bytes_.size()) {
      clear();
      return;
    }
    bytes_.insert(bytes_.end(), piece.begin(), piece.end());
  }

  /// Drops the message.
  void clear() {
    if (bytes_.capacity() > keptCapacity) {
      bytes_ = {};
    }
    bytes_.clear();
  }

 private:
  /// Room that stays for the next message; what a rare long one needed is given back.
  static constexpr std::size_t keptCapacity = 4096;

  std::vector<std::uint8_t> bytes_;
};

}  // namespace midikit::core
