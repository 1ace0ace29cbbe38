#pragma once

#include <cstdint>

/// The one number through which a load tells how far it has come.
namespace karvex::loader {

inline constexpr std::uint32_t LOAD_STATUS_IDLE = 0;
inline constexpr std::uint32_t LOAD_STATUS_PREPARING = 1;
inline constexpr std::uint32_t LOAD_STATUS_IMPORT_FILE = 2;
inline constexpr std::uint32_t LOAD_STATUS_MOVING_FILE = 3;
inline constexpr std::uint32_t LOAD_STATUS_CHECKING_DEVICE = 4;
inline constexpr std::uint32_t LOAD_STATUS_PROGRAMMING = 5;
inline constexpr std::uint32_t LOAD_STATUS_REBOOTING = 6;
inline constexpr std::uint32_t LOAD_STATUS_SUCCESS = 7;
inline constexpr std::uint32_t LOAD_STATUS_ERROR_UNKNOWN_MCU = 8;
inline constexpr std::uint32_t LOAD_STATUS_ERROR_IMPORT_FILE = 9;
inline constexpr std::uint32_t LOAD_STATUS_ERROR_FILE_FORMAT = 10;
inline constexpr std::uint32_t LOAD_STATUS_ERROR_PROGRAM = 11;
inline constexpr std::uint32_t LOAD_STATUS_ERROR_PERMISSION = 12;

/// Stores the status. Any thread; no lock.
void set_load_status(std::uint32_t value);

/// The status stored last; 0 before the first load. It keeps its value between loads. Any thread; no lock.
std::uint32_t get_load_status();

/// What the user reads for a status of 0 to 12; null for any other number.
const char* load_status_text(std::uint32_t value);

}  // namespace karvex::loader
