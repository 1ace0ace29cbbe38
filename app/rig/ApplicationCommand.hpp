#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <set>

#include "app/rig/RigSupport.hpp"
#include "rig/Faults.hpp"
#include "rig/service/ServiceFaults.hpp"

namespace karvex::app {

struct ApplicationOptions {
  std::size_t boards = 3;
  std::optional<std::size_t> upgradeFrom;          ///< the row to begin with, counted from 1
  std::map<std::size_t, rig::Faults> boardFaults;  ///< by place, counted from 0
  std::set<std::size_t> occupied;                  ///< places of boards whose port another program holds
  std::set<std::size_t> snatched;  ///< of those whose port it takes when it has been used once
  rig::ServiceFaults serviceFaults;
  bool answersAlerts = false;
  bool isInWindow = false;  ///< in a window, in real time; otherwise on the terminal or in plain lines
  std::optional<std::filesystem::path> reportFile;
};

/// The whole application on simulated equipment. With `upgradeFrom`, runs to the end without a hand: exit
/// status 0 only if every device of the run was upgraded, matches its file and was reported to the service.
int runApplication(const CommonOptions& common, const ApplicationOptions& options);

}  // namespace karvex::app
