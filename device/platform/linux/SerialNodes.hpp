#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace karvex::device {

/// The device node ("/dev/ttyACM0") of the first terminal that belongs to a USB board with this serial
/// number; a board with several serial interfaces has several terminals. Nothing if there is none, if the
/// list can't be had, or if the number is empty. Opens nothing; the board may have gone when the node is
/// used.
std::optional<std::string> ttyNodeForSerialNumber(std::string_view serialNumber);

}  // namespace karvex::device
