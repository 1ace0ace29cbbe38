#pragma once

#include <cstdint>
#include <span>

/// The microcontrollers that can be programmed, and the one that is selected.
namespace karvex::loader {

struct mcu_entry {
  const char* name;
  std::int32_t code_size;   ///< bytes of flash that a firmware can use
  std::int32_t block_size;  ///< bytes of flash that one report carries
};

/// All microcontrollers, in the order in which a name is looked for.
std::span<const mcu_entry> mcu_table();

/// The row of `mcu_name`, in any letter case, or null. A null name has no row.
const mcu_entry* find_mcu(const char* mcu_name);

// Sizes of the selected microcontroller. Set by select_mcu before the worker starts, only read afterwards.
extern std::int32_t code_size;
extern std::int32_t block_size;

/// Selects the microcontroller. For a name that isn't known, the supported names are printed and the process
/// ends with exit status 1.
void select_mcu(const char* mcu_name);

}  // namespace karvex::loader
