#include "loader/mcu_table.hpp"

#include <algorithm>
#include <array>

#include "loader/ascii.hpp"
#include "loader/platform/host.hpp"

namespace karvex::loader {
namespace {

constexpr std::array<mcu_entry, 21> table = {{
    {"at90usb162", 0x3E00, 128},   {"atmega32u4", 0x7E00, 128},   {"at90usb646", 0xFC00, 256},
    {"at90usb1286", 0x1FC00, 256}, {"mkl26z64", 0xF800, 512},     {"mk20dx128", 0x20000, 1024},
    {"mk20dx256", 0x40000, 1024},  {"mk66fx1m0", 0x100000, 1024}, {"mk64fx512", 0x80000, 1024},
    {"imxrt1062", 0x1F0000, 1024}, {"TEENSY2", 0x7E00, 128},      {"TEENSY2PP", 0x1FC00, 256},
    {"TEENSYLC", 0xF800, 512},     {"TEENSY30", 0x20000, 1024},   {"TEENSY31", 0x40000, 1024},
    {"TEENSY32", 0x40000, 1024},   {"TEENSY35", 0x80000, 1024},   {"TEENSY36", 0x100000, 1024},
    {"TEENSY40", 0x1F0000, 1024},  {"TEENSY41", 0x7C0000, 1024},  {"TEENSY_MICROMOD", 0xFC0000, 1024},
}};

void end_with_supported_names() {
  host_print("Supported MCUs are:\n");
  for (const mcu_entry& mcu : table) {
    host_print(" - %s\n", mcu.name);
  }
  host_end_process(1);
}

}  // namespace

std::int32_t code_size = 0;
std::int32_t block_size = 0;

std::span<const mcu_entry> mcu_table() {
  return table;
}

const mcu_entry* find_mcu(const char* mcu_name) {
  if (mcu_name == nullptr) {
    return nullptr;
  }
  const auto* found = std::find_if(table.begin(), table.end(), [mcu_name](const mcu_entry& mcu) {
    return is_same_ascii(mcu.name, mcu_name);
  });
  return found != table.end() ? found : nullptr;
}

void select_mcu(const char* mcu_name) {
  if (const mcu_entry* mcu = find_mcu(mcu_name)) {
    code_size = mcu->code_size;
    block_size = mcu->block_size;
    return;
  }
  if (mcu_name == nullptr) {
    host_print_error("No MCU specified.\n");
  } else {
    host_print_error("Unknown MCU type \"");
    host_print_error(mcu_name);
    host_print_error("\"\n");
  }
  end_with_supported_names();
}

}  // namespace karvex::loader
