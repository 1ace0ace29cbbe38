#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "app/ExitStatus.hpp"
#include "app/StandardStreams.hpp"
#include "device/DeviceExplorer.hpp"
#include "foundation/run/Runtime.hpp"

/// What the commands of karvex-rig have in common.
namespace karvex::app {

struct CommonOptions {
  bool realTime = true;
  bool showLog = false;  ///< the system log is wanted although standard error is a terminal
};

/// The machine's clock and threads, or virtual ones.
std::unique_ptr<foundation::Runtime> makeRuntime(const CommonOptions& common);

/// A board that isn't back on the bus this long after its load has ended is not waited for.
inline constexpr std::chrono::milliseconds mostTimeToReturn{10'000};
inline constexpr std::string_view hasNotComeBack = " But it has not come back to the bus: plug it in again.";

/// "1 block", "2 blocks"
std::string counted(std::uint64_t number, std::string_view thing);

/// Opens a file for results, if one is wanted, or says on standard error why that can't be done.
bool openResults(std::ofstream& file, const std::optional<std::filesystem::path>& path);

/// Results that didn't reach their file are no results: false, and standard error says so.
bool closeResults(std::ofstream& file, const std::optional<std::filesystem::path>& path);

/// Scans the bus and prints what is on it.
void showBus(device::DeviceExplorer& explorer);

}  // namespace karvex::app
