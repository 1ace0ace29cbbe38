#pragma once

#include <cstddef>

#include "app/rig/RigSupport.hpp"
#include "rig/service/ServiceFaults.hpp"

namespace karvex::app {

struct ServiceOptions {
  std::size_t boards = 3;
  rig::ServiceFaults faults;
};

/// Asks the embedded service for its list, scans the virtual bus, and prints both and what matches.
int runList(const CommonOptions& common, const ServiceOptions& options);

/// Posts the equipment report to the embedded service, and prints what that received.
int runReport(const CommonOptions& common, const ServiceOptions& options);

}  // namespace karvex::app
