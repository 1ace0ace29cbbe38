#pragma once

#include <string>
#include <string_view>

#include "device/platform/DeviceRules.hpp"

namespace karvex::upgrade {

/// Why a run stopped that no dialog tells of.
enum class SilentStop { badUrl, badFile, programError, permissionDenied, deviceMissing };

/// What is known of a board that may not be opened.
struct Refusal {
  std::string node;  ///< the path of its node; empty if it isn't known
  device::RulesState rules = device::RulesState::unknown;
};

/// What happened and what to do, in one line for the user. `serialNumber` is that of the device at which the
/// run stopped; empty if there was no run. `refusal` counts for permissionDenied alone.
/// Thread-safe: yes.
/// Realtime-safe: no, it allocates.
std::string noticeOf(SilentStop stop, std::string_view serialNumber, const Refusal& refusal = {});

}  // namespace karvex::upgrade
