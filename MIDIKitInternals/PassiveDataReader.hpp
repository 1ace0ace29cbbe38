#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <ranges>
#include <span>
#include <utility>

#include "MIDIKitInternals/Result.hpp"

namespace midikit::internals {

/// What PassiveDataReader's closure may give: bytes that outlive the call, so a reference to a container or a
/// view, but no container by value.
template <class Data>
concept LentBytes =
    std::ranges::contiguous_range<Data> && std::ranges::sized_range<Data> &&
    std::ranges::borrowed_range<Data> && std::same_as<std::ranges::range_value_t<Data>, std::uint8_t>;

enum class PassiveDataReadError { pastEndOfStream, invalidByteCount };

/// Reads bytes one after the other from data that it doesn't hold: `closure` gives access to them anew for
/// each read. So the data may move, grow and shrink between reads. What is read is a slice of the data, good
/// for as long as the data lie where they are. Not for use on several threads at once.
///
///     PassiveDataReader reader([&]() -> auto& { return message; });
///     const auto header = reader.read(4);
template <std::invocable Closure>
  requires LentBytes<std::invoke_result_t<const Closure&>>
class PassiveDataReader {
 public:
  using ReadError = PassiveDataReadError;
  using Slice = std::span<const std::uint8_t>;
  using ByteCount = std::optional<std::ptrdiff_t>;

  explicit PassiveDataReader(Closure itsClosure) : closure(std::move(itsClosure)) {}

  /// Reads `count` bytes at `readOffset`, or everything to the end if there is no count, and moves
  /// `readOffset` behind them. An error leaves it where it is: `invalidByteCount` for a negative count,
  /// `pastEndOfStream` for one above remainingByteCount().
  Result<Slice, ReadError> read(ByteCount count = std::nullopt) {
    auto slice = nonAdvancingRead(count);
    if (slice) {
      readOffset += slice->size();
    }
    return slice;
  }

  /// The same, and leaves `readOffset` alone.
  Result<Slice, ReadError> nonAdvancingRead(ByteCount count = std::nullopt) const {
    const auto rest = remaining();
    if (!count) {
      return rest;
    }
    if (*count < 0) {
      return ReadError::invalidByteCount;
    }
    const auto bytes = static_cast<std::size_t>(*count);
    if (bytes > rest.size()) {
      return ReadError::pastEndOfStream;
    }
    return rest.first(bytes);
  }

  /// Reads one byte and moves `readOffset` behind it; `pastEndOfStream` if nothing remains.
  Result<std::uint8_t, ReadError> readByte() {
    const auto byte = nonAdvancingReadByte();
    if (byte) {
      ++readOffset;
    }
    return byte;
  }

  /// The same, and leaves `readOffset` alone.
  Result<std::uint8_t, ReadError> nonAdvancingReadByte() const {
    const auto rest = remaining();
    if (rest.empty()) {
      return ReadError::pastEndOfStream;
    }
    return rest.front();
  }

  /// Moves `readOffset` on without a read, also to behind the end, where nothing remains.
  void advance(std::size_t count) {
    readOffset += std::min(count, std::numeric_limits<std::size_t>::max() - readOffset);
  }

  /// How many bytes there are from `readOffset` to the end.
  std::size_t remainingByteCount() const { return remaining().size(); }

  /// Gives access to the data.
  Closure closure;
  /// How many bytes at the front of the data lie behind the reader. Whoever wants to go back sets it.
  std::size_t readOffset = 0;

 private:
  Slice remaining() const {
    const Slice data(std::invoke(closure));
    return data.subspan(std::min(readOffset, data.size()));
  }
};

}  // namespace midikit::internals
