#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "app/rig/Equipment.hpp"
#include "app/rig/RigSupport.hpp"
#include "rig/service/ServiceFaults.hpp"

namespace karvex::app {

/// A maker's own data.
struct MakerOptions {
  std::filesystem::path list;                     ///< empty: none were given
  std::optional<std::filesystem::path> firmware;  ///< the folder of the files
};

struct ServeOptions {
  MakerOptions maker;
  std::uint16_t port = 8443;
  rig::ServiceFaults faults;
};

/// Prints every fault of a maker's list, and with a folder also of its firmware files. Exit status 1 if there
/// are any. Throws std::runtime_error if the list can't be read.
///
/// Thread-safe: no.
/// Realtime-safe: no, it reads files.
int runCheck(const MakerOptions& options);

/// Answers a real karvex with the maker's list and files until a signal ends it. Says first how to reach it.
/// Throws std::runtime_error if the list can't be read or the port is taken.
///
/// Thread-safe: no.
/// Realtime-safe: no, it reads files and waits.
int runServe(const ServeOptions& options);

/// The equipment of a maker's list, for boards that match it. Nothing if the list has faults; they are
/// printed.
/// Throws std::runtime_error if the list can't be read.
///
/// Thread-safe: no.
/// Realtime-safe: no, it reads files.
std::optional<MakerEquipment> makerEquipment(const MakerOptions& options);

}  // namespace karvex::app
