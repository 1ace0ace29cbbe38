#pragma once

#include <vector>

#include "records/DeviceInfo.hpp"

namespace karvex::records {

/// The equipment report: the boards that a user has, as the last scan found them.
struct DeviceConfiguration {
  std::vector<DeviceInfo> devices;

  bool operator==(const DeviceConfiguration&) const = default;
};

}  // namespace karvex::records
