#pragma once

namespace karvex::app {

/// How a program ends that does something by itself.
enum ExitStatus : int {
  exitLoaded = 0,
  exitFaultyList = 1,
  exitWrongUse = 2,  ///< 1 is also the loader's own, for a microcontroller that it doesn't know
  exitLoadFailed = 3,
};

}  // namespace karvex::app
