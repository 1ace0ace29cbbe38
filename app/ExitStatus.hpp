#pragma once

namespace karvex::app {

/// How a program ends that does something by itself.
enum ExitStatus : int {
  exitLoaded = 0,
  exitWrongUse = 2,  ///< 1 is the loader's own, for a microcontroller that it doesn't know
  exitLoadFailed = 3,
};

}  // namespace karvex::app
