#pragma once

#include <string>
#include <vector>

#include "ui/Snapshot.hpp"

namespace karvex::ui::console {

/// What has happened between two snapshots, in plain lines: a new list, the status of a device as it changes,
/// its version and whether it is online, what is selected, and the alerts with their text. Pure.
std::vector<std::string> changesBetween(const Snapshot& before, const Snapshot& after);

}  // namespace karvex::ui::console
