#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

#include "records/ServerDeviceDescriptor.hpp"
#include "rig/maker/FirmwareFolder.hpp"
#include "rig/maker/ListSource.hpp"
#include "rig/service/ServedDevice.hpp"

namespace karvex::rig {

/// One device of a maker's list.
struct MakerDevice {
  records::ServerDeviceDescriptor listed;
  FoundFirmware firmware;  ///< empty if no folder was given
};

/// What came of a maker's list.
struct CheckedList {
  std::vector<ListFault> faults;     ///< in the order of their lines
  bool hasMoreFaults = false;        ///< there may be more than these
  std::vector<MakerDevice> devices;  ///< in the order of the list; empty if there are faults
};

/// Looks for everything in a list by which the upgrade of a device would fail or go wrong, and with a folder
/// also in the firmware files. `text` may be any bytes; time and memory are bounded by its length, and so is
/// what is read of each file.
///
/// Thread-safe: yes.
/// Realtime-safe: no, it allocates and reads files.
CheckedList checkList(std::string_view text, const std::optional<std::filesystem::path>& folder);

/// The list as a service at that base address returns it, with its files below /firmware/.
///
/// Thread-safe: yes.
/// Realtime-safe: no, it allocates.
std::vector<ServedDevice> servedFrom(const std::vector<MakerDevice>& devices, const std::string& baseAddress);

}  // namespace karvex::rig
