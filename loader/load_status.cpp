#include "loader/load_status.hpp"

#include <array>
#include <atomic>

namespace karvex::loader {
namespace {

std::atomic<std::uint32_t> load_status = LOAD_STATUS_IDLE;

constexpr std::array<const char*, 13> status_texts = {
    "Idle",
    "Preparing...",
    "Importing file...",
    "Moving file...",
    "Checking device state...",
    "Programming...",
    "Rebooting...",
    "Success",
    "Error - Unknown MCU device",
    "Could not import file",
    "Bad file format",
    "Program error",
    "Permission denied",
};

}  // namespace

void set_load_status(std::uint32_t value) {
  load_status.store(value, std::memory_order_relaxed);
}

std::uint32_t get_load_status() {
  return load_status.load(std::memory_order_relaxed);
}

const char* load_status_text(std::uint32_t value) {
  return value < status_texts.size() ? status_texts[value] : nullptr;
}

}  // namespace karvex::loader
