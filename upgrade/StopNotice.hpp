#pragma once

#include <string>
#include <string_view>

namespace karvex::upgrade {

/// Why a run stopped that no dialog tells of.
enum class SilentStop { badUrl, badFile, programError, permissionDenied, deviceMissing };

/// What happened and what to do, in one line for the user. `serialNumber` is that of the device at which the
/// run stopped; empty if there was no run. Thread-safe: yes. Realtime-safe: no, it allocates.
std::string noticeOf(SilentStop stop, std::string_view serialNumber);

}  // namespace karvex::upgrade
