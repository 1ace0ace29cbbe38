#pragma once

#include <string>

#include "app/rig/RunRecorder.hpp"

namespace karvex::app {

/// The record as a JSON document, for programs. Times are milliseconds since the start.
std::string jsonOf(const RunRecord& record);

}  // namespace karvex::app
