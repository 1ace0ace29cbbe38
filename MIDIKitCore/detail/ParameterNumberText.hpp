#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "MIDIKitCore/numbers/UInt.hpp"

namespace midikit::core::detail {

/// A byte of a data entry: its decimal digits, or "nil (0)".
inline std::string dataEntryText(std::optional<UInt7> byte) {
  return byte ? byte->description() : "nil (0)";
}

/// `opening`, both bytes of a data entry with their labels, and ")".
inline std::string dataEntryText(std::string_view opening, std::optional<UInt7> msb,
                                 std::optional<UInt7> lsb) {
  return std::string(opening) + "dataMSB: " + dataEntryText(msb) + ", dataLSB: " + dataEntryText(lsb) + ")";
}

}  // namespace midikit::core::detail
