#pragma once

#include <memory>
#include <string>

#include "device/DeviceExplorer.hpp"
#include "foundation/Runtime.hpp"

/// What the commands of karvex-rig have in common.
namespace karvex::app {

/// How the program ends.
enum ExitStatus : int {
  exitLoaded = 0,
  exitWrongUse = 2,  ///< 1 is the loader's own, for a microcontroller that it doesn't know
  exitLoadFailed = 3,
};

struct CommonOptions {
  bool realTime = true;
  bool showLog = false;  ///< the system log is wanted although standard error is a terminal
};

/// The machine's clock and threads, or virtual ones.
std::unique_ptr<foundation::Runtime> makeRuntime(const CommonOptions& common);

/// Prints a line on standard output at once.
void say(const std::string& line);

/// Scans the bus and prints what is on it.
void showBus(device::DeviceExplorer& explorer);

}  // namespace karvex::app
