#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "rig/Faults.hpp"

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

struct ProgramOptions {
  std::filesystem::path file;
  std::string mcu;
  rig::Faults faults;
  std::optional<std::filesystem::path> reportsFile;
  std::optional<std::filesystem::path> reportFile;
};

/// One load of one file onto one simulated board.
int runProgram(const CommonOptions& common, const ProgramOptions& options);

/// Every bundled firmware onto a board of its kind, one after the other.
int runDemo(const CommonOptions& common);

}  // namespace karvex::app
