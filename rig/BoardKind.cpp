#include "rig/BoardKind.hpp"

#include <algorithm>
#include <array>

#include "loader/ascii.hpp"

namespace karvex::rig {
namespace {

constexpr std::uint32_t KiB = 1024;

/// Serial and MIDI is told apart from other makers' boards by the revision, so every kind has one of those
/// that the equipment uses.
constexpr std::int32_t serialAndMidi = 0x0489;

constexpr BoardKind smallAvr(std::string_view mcu, std::uint32_t flash, std::uint32_t block) {
  return {mcu, flash, block, AddressBytes::low16, serialAndMidi, 0x0200};
}
constexpr BoardKind largeAvr(std::string_view mcu) {
  return {mcu, 127 * KiB, 256, AddressBytes::high16, serialAndMidi, 0x0211};
}
constexpr BoardKind kinetis(std::string_view mcu, std::uint32_t flash, std::uint32_t block = 1024) {
  return {mcu, flash, block, AddressBytes::full24, serialAndMidi, 0x0212};
}
constexpr BoardKind imxrt(std::string_view mcu, std::uint32_t flash, std::int32_t revision) {
  return {mcu, flash, 1024, AddressBytes::full24, serialAndMidi, revision};
}

/// The flash that a firmware may use: what the bootloader and the emulated EEPROM leave of the chip's.
constexpr std::array<BoardKind, 21> kinds = {{
    smallAvr("at90usb162", 16 * KiB - 512, 128),
    smallAvr("atmega32u4", 32 * KiB - 512, 128),
    smallAvr("TEENSY2", 32 * KiB - 512, 128),
    smallAvr("at90usb646", 63 * KiB, 256),
    largeAvr("at90usb1286"),
    largeAvr("TEENSY2PP"),
    kinetis("mkl26z64", 62 * KiB, 512),
    kinetis("TEENSYLC", 62 * KiB, 512),
    kinetis("mk20dx128", 128 * KiB),
    kinetis("TEENSY30", 128 * KiB),
    kinetis("mk20dx256", 256 * KiB),
    kinetis("TEENSY31", 256 * KiB),
    kinetis("TEENSY32", 256 * KiB),
    kinetis("mk64fx512", 512 * KiB),
    kinetis("TEENSY35", 512 * KiB),
    kinetis("mk66fx1m0", 1024 * KiB),
    kinetis("TEENSY36", 1024 * KiB),
    imxrt("imxrt1062", 2048 * KiB - 64 * KiB, 0x0279),
    imxrt("TEENSY40", 2048 * KiB - 64 * KiB, 0x0279),
    imxrt("TEENSY41", 8192 * KiB - 256 * KiB, 0x0280),
    imxrt("TEENSY_MICROMOD", 16384 * KiB - 256 * KiB, 0x0281),
}};

}  // namespace

std::span<const BoardKind> boardKinds() {
  return kinds;
}

const BoardKind* findBoardKind(std::string_view mcu) {
  const auto* found = std::find_if(kinds.begin(), kinds.end(), [mcu](const BoardKind& kind) {
    return loader::is_same_ascii(kind.mcu, mcu);
  });
  return found != kinds.end() ? found : nullptr;
}

}  // namespace karvex::rig
