#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "app/rig/RigSupport.hpp"
#include "rig/Faults.hpp"

namespace karvex::app {

struct ProgramOptions {
  std::filesystem::path file;
  std::string mcu;
  rig::Faults faults;
  std::optional<std::filesystem::path> reportsFile;
  std::optional<std::filesystem::path> reportFile;
};

/// One load of one file onto one simulated board.
int runProgram(const CommonOptions& common, const ProgramOptions& options);

}  // namespace karvex::app
