#pragma once

#include <string>

#include "records/DeviceConfiguration.hpp"

namespace karvex::device {

/// The report as the JSON document that goes to the service, without blanks. Throws std::exception when a
/// text can't stand in JSON, since it is no UTF-8.
std::string jsonOf(const records::DeviceConfiguration& configuration);

}  // namespace karvex::device
