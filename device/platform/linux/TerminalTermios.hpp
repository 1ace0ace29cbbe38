#pragma once

#include <termios.h>

#include <vector>

#include "device/SerialPortSettings.hpp"

/// A port's settings in the terms of the system's terminal interface. Pure functions.
namespace karvex::device {

/// `present` with the settings made in it; what they don't speak of stays. Parity that is on stays on for
/// ParityType::none. The C library knows one speed for both directions, so the transmit rate decides.
termios termiosWith(const termios& present, const SerialPortSettings& settings);

/// What to hand to tcsetattr, in that order. The last one is termiosWith(); it is the only one but in one
/// case:
///
/// The kernel's driver for USB modems sends the device a line coding only when it differs from the one
/// before, and a node keeps its speed over close and reopen. So a node that is at 134 baud already, because a
/// request was sent that the board didn't follow, would swallow the next request. It goes by 9600 baud first,
/// the speed of a fresh node.
std::vector<termios> termiosSteps(const termios& present, const SerialPortSettings& settings);

}  // namespace karvex::device
