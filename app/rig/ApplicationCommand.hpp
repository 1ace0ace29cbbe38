#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>

#include "app/rig/Equipment.hpp"
#include "app/rig/RigSupport.hpp"
#include "rig/service/ServiceFaults.hpp"

namespace karvex::app {

struct ApplicationOptions {
  EquipmentPlan equipment;
  std::optional<std::size_t> upgradeFrom;  ///< the row to begin with, counted from 1
  rig::ServiceFaults serviceFaults;
  bool answersAlerts = false;
  bool isInWindow = false;  ///< in a window; otherwise on the terminal or in plain lines
  std::optional<std::filesystem::path> reportFile;
};

/// The whole application on simulated equipment. With `upgradeFrom`, runs to the end unattended: exit
/// status 0 only if every device of the run was upgraded, matches its file and was reported to the service.
int runApplication(const CommonOptions& common, const ApplicationOptions& options);

}  // namespace karvex::app
