#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "rig/BoardKind.hpp"
#include "rig/Faults.hpp"
#include "rig/VirtualBus.hpp"
#include "rig/maker/ListCheck.hpp"
#include "rig/service/ServedDevice.hpp"

namespace karvex::app {

/// The firmware files that come with the rig, in the order of their names.
std::vector<std::filesystem::path> bundledFirmware();

/// The directory that they are in.
std::filesystem::path firmwareDirectory();

/// The one for the board at that place of the equipment, from 0: the bundled ones in turn.
std::filesystem::path firmwareAt(std::size_t place);

/// "expression-pedal.TEENSY31.hex" is for a TEENSY31.
std::string mcuInNameOf(const std::filesystem::path& firmware);

/// The serial number of the board at that place of the bus, from 0.
std::string serialNumberOf(std::size_t place);

/// The devices of a maker, which take the place of the bundled ones.
struct MakerEquipment {
  std::vector<rig::MakerDevice> devices;
  std::filesystem::path firmwareFolder;
};

/// What the rig's user owns.
struct EquipmentPlan {
  std::size_t boards = 3;                     ///< attached, and listed by the service
  std::size_t listedButAbsent = 0;            ///< listed behind those, and not attached
  std::size_t attachedUnlisted = 0;           ///< attached behind those, and not listed
  std::map<std::size_t, rig::Faults> faults;  ///< of the boards at those places
  std::set<std::size_t> occupied;             ///< places of boards whose serial port another program holds
  std::set<std::size_t> snatched;             ///< of those whose port it takes when it has been used once
  /// Where the boards keep their memories, a file each; without it, they end with the program.
  std::optional<std::filesystem::path> keptIn;
  std::optional<MakerEquipment> maker;  ///< `boards` is the number of its devices then

  std::string serialNumberAt(std::size_t place) const;
  std::filesystem::path firmwareFileAt(std::size_t place) const;
  const rig::BoardKind& kindAt(std::size_t place) const;
  std::filesystem::path firmwareFolder() const;
};

/// Plugs the boards in, each of the kind that its firmware is for. Throws std::system_error if their memories
/// can't be kept.
void plugIn(const EquipmentPlan& plan, rig::VirtualBus& bus);

/// The list that a service at that base address has of it. Every bundled firmware is a version ahead of the
/// boards.
std::vector<rig::ServedDevice> servedDevices(const EquipmentPlan& plan, const std::string& serviceAddress);

}  // namespace karvex::app
