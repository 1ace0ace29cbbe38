#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

namespace midikit::core {

/// The body of a system exclusive message: bytes that never change and that all copies share. It has the size
/// of a pointer, so that the rare event with a body doesn't make every other one larger. Making one from
/// bytes allocates once (not at all for no bytes); a copy allocates nothing. Copies may be used on different
/// threads.
class SysExData {
 public:
  SysExData() noexcept = default;
  explicit SysExData(std::span<const std::uint8_t> bytes);
  SysExData(std::initializer_list<std::uint8_t> bytes) : SysExData(std::span(bytes.begin(), bytes.size())) {}

  SysExData(const SysExData& other) noexcept : block_(other.block_) { retain(); }
  SysExData(SysExData&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
  SysExData& operator=(SysExData other) noexcept {
    std::swap(block_, other.block_);
    return *this;
  }
  ~SysExData() {
    if (block_ != nullptr) {
      release();
    }
  }

  const std::uint8_t* data() const noexcept;
  std::size_t size() const noexcept;
  bool empty() const noexcept { return block_ == nullptr; }
  const std::uint8_t* begin() const noexcept { return data(); }
  const std::uint8_t* end() const noexcept { return data() + size(); }
  std::uint8_t operator[](std::size_t index) const noexcept { return data()[index]; }

  friend bool operator==(const SysExData& a, const SysExData& b) {
    return a.block_ == b.block_ || std::ranges::equal(a, b);
  }

 private:
  struct Block;

  void retain() const noexcept;
  void release() noexcept;

  /// Null for no bytes.
  Block* block_ = nullptr;
};

/// A body in which every byte is below 0x80, as the MIDI 1.0 specification asks of data bytes.
class SysEx7Data : public SysExData {
 public:
  SysEx7Data() noexcept = default;

  /// None if a byte is 0x80 or above.
  static std::optional<SysEx7Data> exactly(std::span<const std::uint8_t> bytes);

 private:
  explicit SysEx7Data(std::span<const std::uint8_t> bytes) : SysExData(bytes) {}
};

}  // namespace midikit::core

/// Of the bytes.
template <>
struct std::hash<midikit::core::SysExData> {
  std::size_t operator()(const midikit::core::SysExData& data) const noexcept {
    return std::hash<std::string_view>{}({reinterpret_cast<const char*>(data.data()), data.size()});
  }
};

template <>
struct std::hash<midikit::core::SysEx7Data> : std::hash<midikit::core::SysExData> {};
