#pragma once

#include <filesystem>

#include "app/diagnosis/Diagnosis.hpp"

namespace karvex::app {

/// Looks at the machine: its system, our udev rules, programs that meddle with boards, the MIDI service.
/// Reads files below `root`, which is another one than "/" for tests, and opens no device. Thread-safe: no,
/// as device::obstacleOf(). Realtime-safe: no, it reads files of the system.
SystemDiagnosis surveySystem(const std::filesystem::path& root = "/");

}  // namespace karvex::app
