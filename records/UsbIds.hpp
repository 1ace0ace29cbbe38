#pragma once

#include <cstdint>

/// The numbers by which a USB bus knows the boards.
namespace karvex::records {

/// The board maker's vendor ID.
inline constexpr std::int32_t boardVendorId = 0x16C0;
/// The product ID of every board in its HalfKay bootloader.
inline constexpr std::int32_t halfKayProductId = 0x0478;

}  // namespace karvex::records
