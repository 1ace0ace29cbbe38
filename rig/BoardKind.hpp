#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace karvex::rig {

/// Which address bits a board's bootloader expects at the start of a report, lowest byte first.
enum class AddressBytes {
  low16,   ///< bits 0 to 15 in two bytes
  high16,  ///< bits 8 to 23 in two bytes
  full24,  ///< bits 0 to 23 in three bytes of a header of 64
};

/// What a board of one kind is made of: the facts that its bootloader goes by, and what it tells the USB
/// host.
struct BoardKind {
  std::string_view mcu;  ///< name by which users and the firmware service know it
  std::uint32_t flashSize;
  std::uint32_t blockSize;
  AddressBytes addressBytes;
  std::int32_t productId;  ///< of the running firmware: USB serial and MIDI, or serial alone
  std::int32_t revision;   ///< bcdDevice of the running firmware

  std::size_t headerLength() const { return addressBytes == AddressBytes::full24 ? 64 : 2; }
  std::size_t reportLength() const { return headerLength() + blockSize; }
};

/// All kinds.
std::span<const BoardKind> boardKinds();

/// The kind of that name in any letter case, or null.
const BoardKind* findBoardKind(std::string_view mcu);

}  // namespace karvex::rig
