#include "rig/ExpectedFlash.hpp"

#include <algorithm>
#include <fstream>
#include <numeric>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace karvex::rig {
namespace {

constexpr std::size_t pieceLength = 1023;
constexpr std::uint64_t addressLimit = 0xFFFFFF;

using Bytes = std::vector<std::uint8_t>;

/// The lines of a file, read a block at a time.
class Lines {
 public:
  explicit Lines(std::istream& file) : file_(file) {}

  /// The next line with its line end, up to a NUL byte in it; one that is too long comes in pieces. None at
  /// the end of the file. Valid until the next call.
  std::optional<std::string_view> next() {
    if (block_.size() - at_ < pieceLength) {
      fill();
    }
    const auto piece = std::string_view(block_).substr(at_, pieceLength);
    if (piece.empty()) {
      return std::nullopt;
    }
    const auto end = piece.find('\n');
    const auto line = end != std::string_view::npos ? piece.substr(0, end + 1) : piece;
    at_ += line.size();
    return line.substr(0, line.find('\0'));
  }

 private:
  void fill() {
    constexpr std::size_t blockLength = 65536;
    block_.erase(0, std::exchange(at_, 0));
    const auto rest = block_.size();
    block_.resize(rest + blockLength);
    file_.read(block_.data() + rest, blockLength);
    block_.resize(rest + static_cast<std::size_t>(file_.gcount()));
  }

  std::istream& file_;
  std::string block_;
  std::size_t at_ = 0;  ///< what of it has been taken
};

std::optional<std::uint8_t> digit(char character) {
  const auto value = [character](char first, int offset) {
    return std::optional(static_cast<std::uint8_t>(character - first + offset));
  };
  if (character >= '0' && character <= '9') {
    return value('0', 0);
  }
  if (character >= 'a' && character <= 'f') {
    return value('a', 10);
  }
  return character >= 'A' && character <= 'F' ? value('A', 10) : std::nullopt;
}

/// As many bytes as the text has whole pairs of digits at its beginning.
Bytes leadingBytes(std::string_view text) {
  Bytes bytes;
  for (std::size_t at = 0; at + 1 < text.size(); at += 2) {
    const auto high = digit(text[at]);
    const auto low = digit(text[at + 1]);
    if (!high || !low) {
      break;
    }
    bytes.push_back(static_cast<std::uint8_t>(*high * 16 + *low));
  }
  return bytes;
}

std::uint32_t bigEndian(const Bytes& bytes, std::size_t at) {
  return static_cast<std::uint32_t>(bytes[at] * 256 + bytes[at + 1]);
}

/// True when the bytes of a record, its checksum among them, add up to 0 modulo 256.
bool addsUp(const Bytes& bytes, std::size_t count) {
  return bytes.size() >= count &&
         std::accumulate(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count), 0U) % 256 == 0;
}

class Reading {
 public:
  explicit Reading(const BoardKind& kind) : kind_(kind) { result_.flash.assign(kind.flashSize, 0xFF); }

  bool isAtEnd() const { return result_.hasEndRecord || result_.badLine != 0; }
  HexReading take() { return std::move(result_); }

  void readNext(std::string_view line) {
    ++lines_;
    if (!line.empty() && !read(line)) {
      result_.badLine = lines_;
    }
  }

 private:
  /// False if the line is malformed.
  bool read(std::string_view line) {
    constexpr std::size_t header = 4;
    if (line.size() < 11 || line[0] != ':') {
      return false;
    }
    const auto bytes = leadingBytes(line.substr(1));
    if (bytes.size() < header || bytes[0] * std::size_t{2} + 11 > line.size()) {
      return false;
    }
    const std::size_t count = bytes[0];
    const std::uint64_t start = base_ + bigEndian(bytes, 1);
    if (start + count > addressLimit) {
      return false;
    }
    switch (bytes[3]) {
      case 0:
        return readData(bytes, start);
      case 1:
        result_.hasEndRecord = true;
        return true;
      case 2:
      case 4:
        if (count == 2 && addsUp(bytes, header + count + 1)) {
          setBase(bytes[3], bigEndian(bytes, header));
        }
        return true;
      default:
        return true;
    }
  }

  bool readData(const Bytes& bytes, std::uint64_t start) {
    const std::size_t count = bytes[0];
    if (!addsUp(bytes, count + 5)) {
      return false;
    }
    result_.dataBytes += count;
    for (std::size_t i = 0; i < count; ++i) {
      if (start + i < result_.flash.size()) {
        result_.flash[start + i] = bytes[4 + i];
      } else {
        result_.firstBeyond = std::min(result_.firstBeyond.value_or(start + i), start + i);
      }
    }
    return true;
  }

  void setBase(std::uint8_t type, std::uint64_t value) {
    constexpr std::uint64_t externalFlash = 0x60000000;
    base_ = type == 2 ? value * 16 : value * 65536;
    const bool mapsExternalFlash = kind_.flashSize > 1024 * 1024;
    if (mapsExternalFlash && type == 4 && base_ >= externalFlash && base_ < externalFlash + kind_.flashSize) {
      base_ -= externalFlash;
    }
  }

  const BoardKind& kind_;
  HexReading result_;
  std::size_t lines_ = 0;
  std::uint64_t base_ = 0;
};

}  // namespace

std::optional<HexReading> readHex(const std::filesystem::path& file, const BoardKind& kind) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) {
    return std::nullopt;
  }
  Lines lines(stream);
  Reading reading(kind);
  for (auto line = lines.next(); line && !reading.isAtEnd(); line = lines.next()) {
    reading.readNext(*line);
  }
  return stream.bad() ? std::nullopt : std::optional(reading.take());
}

std::optional<std::vector<std::uint8_t>> expectedFlash(const std::filesystem::path& file,
                                                       const BoardKind& kind) {
  auto reading = readHex(file, kind);
  const bool isGood = reading && reading->badLine == 0;
  return isGood ? std::optional(std::move(reading->flash)) : std::nullopt;
}

}  // namespace karvex::rig
