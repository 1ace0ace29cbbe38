#pragma once

#include <string>

namespace karvex::device {

/// The programs that have a device node open, this one included: "minicom (process 4711)", several joined by
/// "and". Empty if there is none among the processes that this user may look at. Takes a few milliseconds; at
/// most 3 programs are named and 65,536 open files looked at.
std::string holdersOf(const std::string& node);

/// The same of the node that this program has open under that number, without this program itself and its own
/// children that are just being started: those lose what they inherited when they begin.
std::string otherHoldersOf(int descriptor);

}  // namespace karvex::device
