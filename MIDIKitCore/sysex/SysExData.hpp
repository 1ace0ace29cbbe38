#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

namespace midikit::core {

class MIDIEvent;

/// The body of a system exclusive message: bytes that never change. A short one stands in the object itself,
/// a longer one in memory that all copies share. Making a longer one from bytes allocates once; nothing else
/// allocates. Copies may be used on different threads.
///
/// An object of 16 bytes that may stand at any address, so that the rare event with a body doesn't make every
/// other one larger. What `data()` and the iterators point to stays where it is as long as the object does.
class SysExData {
 public:
  /// The most bytes that stand in the object: more than any message has in one Universal MIDI Packet.
  static constexpr std::size_t longestInside = 15;

  SysExData() noexcept = default;
  explicit SysExData(std::span<const std::uint8_t> bytes) {
    if (bytes.size() <= longestInside) [[likely]] {
      copyInside(bytes);
    } else {
      share(bytes);
    }
  }
  SysExData(std::initializer_list<std::uint8_t> bytes) : SysExData(std::span(bytes.begin(), bytes.size())) {}

  SysExData(const SysExData& other) noexcept : inside_(other.inside_), size_(other.size_) {
    copiedAsMemory();
  }
  SysExData(SysExData&& other) noexcept : inside_(other.inside_), size_(other.size_) {
    other.movedAsMemory();
  }
  SysExData& operator=(SysExData other) noexcept {
    std::swap(inside_, other.inside_);
    std::swap(size_, other.size_);
    return *this;
  }
  ~SysExData() {
    if (isShared()) {
      release();
    }
  }

  const std::uint8_t* data() const noexcept { return isShared() ? sharedBytes().data() : inside_.data(); }
  std::size_t size() const noexcept { return isShared() ? sharedBytes().size() : size_; }
  bool empty() const noexcept { return size_ == 0; }
  const std::uint8_t* begin() const noexcept { return data(); }
  const std::uint8_t* end() const noexcept { return data() + size(); }
  std::uint8_t operator[](std::size_t index) const noexcept { return data()[index]; }

  friend bool operator==(const SysExData& a, const SysExData& b) {
    return a.data() == b.data() || std::ranges::equal(a, b);
  }

 private:
  friend class MIDIEvent;
  struct Block;

  /// Instead of a size: `inside_` begins with the address of the block with the bytes.
  static constexpr std::uint8_t shared = 0xFF;

  /// This one is the copy.
  void copiedAsMemory() const noexcept {
    if (isShared()) {
      retain();
    }
  }
  /// This one was the original.
  void movedAsMemory() noexcept { size_ = 0; }

  /// As two pieces that overlap, or as the first, middle and last byte: far quicker than a copy of any size.
  void copyInside(std::span<const std::uint8_t> bytes) noexcept {
    const std::size_t size = bytes.size();
    const auto copyEnds = [&](std::size_t piece) {
      std::memcpy(inside_.data(), bytes.data(), piece);
      std::memcpy(inside_.data() + size - piece, bytes.data() + size - piece, piece);
    };
    if (size >= 8) {
      copyEnds(8);
    } else if (size >= 4) {
      copyEnds(4);
    } else if (size != 0) {
      inside_[size / 2] = bytes[size / 2];
      copyEnds(1);
    }
    size_ = static_cast<std::uint8_t>(size);
  }

  bool isShared() const noexcept { return size_ == shared; }
  std::span<const std::uint8_t> sharedBytes() const noexcept;
  Block& block() const noexcept;
  void share(std::span<const std::uint8_t> bytes);
  void retain() const noexcept;
  void release() noexcept;

  std::array<std::uint8_t, longestInside> inside_{};
  std::uint8_t size_ = 0;
};

static_assert(sizeof(SysExData) == 16 && alignof(SysExData) == 1);

/// Bytes of which each one is below 0x80, as the MIDI 1.0 specification asks of data bytes.
class SysEx7Bytes {
 public:
  /// None if a byte is 0x80 or above.
  static std::optional<SysEx7Bytes> exactly(std::span<const std::uint8_t> bytes) {
    constexpr std::uint64_t highBits = 0x8080808080808080U;
    return (allBits(bytes) & highBits) == 0 ? std::optional(SysEx7Bytes(bytes)) : std::nullopt;
  }

  std::span<const std::uint8_t> span() const { return bytes_; }

 private:
  explicit SysEx7Bytes(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  /// What is set in any byte, in some byte of the result. Goes by pieces, of which the last one overlaps the
  /// one before, because most messages are too short for a loop over bytes to be quick.
  static std::uint64_t allBits(std::span<const std::uint8_t> bytes) {
    const std::size_t size = bytes.size();
    const auto at = [&]<class Piece>(std::size_t offset, Piece piece) {
      std::memcpy(&piece, bytes.data() + offset, sizeof piece);
      return std::uint64_t{piece};
    };
    if (size >= 8) {
      std::uint64_t bits = at(size - 8, std::uint64_t());
      for (std::size_t offset = 0; offset + 8 < size; offset += 8) {
        bits |= at(offset, std::uint64_t());
      }
      return bits;
    }
    if (size >= 4) {
      return at(0, std::uint32_t()) | at(size - 4, std::uint32_t());
    }
    return size != 0 ? std::uint64_t{bytes[0]} | bytes[size / 2] | bytes[size - 1] : 0;
  }

  std::span<const std::uint8_t> bytes_;
};

/// A body of such bytes. It can be read as any other body, but nothing puts other bytes into it.
class SysEx7Data {
 public:
  SysEx7Data() noexcept = default;
  explicit SysEx7Data(SysEx7Bytes bytes) : body_(bytes.span()) {}

  /// None if a byte is 0x80 or above.
  static std::optional<SysEx7Data> exactly(std::span<const std::uint8_t> bytes) {
    const auto checked = SysEx7Bytes::exactly(bytes);
    return checked ? std::optional<SysEx7Data>(std::in_place, *checked) : std::nullopt;
  }

  operator const SysExData&() const noexcept { return body_; }

  const std::uint8_t* data() const noexcept { return body_.data(); }
  std::size_t size() const noexcept { return body_.size(); }
  bool empty() const noexcept { return body_.empty(); }
  const std::uint8_t* begin() const noexcept { return body_.begin(); }
  const std::uint8_t* end() const noexcept { return body_.end(); }
  std::uint8_t operator[](std::size_t index) const noexcept { return body_[index]; }

  friend bool operator==(const SysEx7Data&, const SysEx7Data&) = default;

 private:
  SysExData body_;
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
