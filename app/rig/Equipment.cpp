#include "app/rig/Equipment.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <memory>

#include "rig/BoardKind.hpp"
#include "rig/VirtualBoard.hpp"

namespace karvex::app {
namespace {

rig::ServedDevice servedDeviceAt(std::size_t place, const std::string& serviceAddress) {
  const auto file = firmwareAt(place).filename();
  return {
      .isValid = true,
      .midiName = fmt::format("{} MIDI", mcuInNameOf(file)),
      .deviceSerialNumber = serialNumberOf(place),
      .mcu = mcuInNameOf(file),
      .firmwareName = file.stem().stem().string(),
      .firmwareVersion = fmt::format("2.{}", place % 10),
      .setupDelay = 3000,  // A board takes 1.3 s to come back; this leaves it time to set itself up.
      .serverURL = serviceAddress,
      .serverDirectory = "/firmware/",
      .serverFile = file.string(),
      .sequenceNumber = static_cast<std::int64_t>(place) + 1,
      .currentVersion = fmt::format("1.{}", place % 10),
  };
}

}  // namespace

std::filesystem::path firmwareDirectory() {
  return KARVEX_FIRMWARE_DIRECTORY;
}

std::vector<std::filesystem::path> bundledFirmware() {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(firmwareDirectory())) {
    if (rig::findBoardKind(mcuInNameOf(entry.path())) != nullptr && entry.path().extension() == ".hex") {
      files.push_back(entry.path());
    }
  }
  std::ranges::sort(files);
  return files;
}

std::filesystem::path firmwareAt(std::size_t place) {
  static const auto files = bundledFirmware();
  return files.at(place % files.size());
}

std::string mcuInNameOf(const std::filesystem::path& firmware) {
  const auto name = firmware.stem().extension().string();
  return name.empty() ? name : name.substr(1);
}

std::string serialNumberOf(std::size_t place) {
  return std::to_string(1'000'010 + place * 10);
}

std::string EquipmentPlan::serialNumberAt(std::size_t place) const {
  return maker ? maker->devices.at(place).listed.deviceSerialNumber : serialNumberOf(place);
}

std::filesystem::path EquipmentPlan::firmwareFileAt(std::size_t place) const {
  return maker ? maker->devices.at(place).firmware.file : firmwareAt(place);
}

/// A list that was checked names kinds that there are, and so do the bundled files.
const rig::BoardKind& EquipmentPlan::kindAt(std::size_t place) const {
  return *rig::findBoardKind(maker ? maker->devices.at(place).listed.mcu : mcuInNameOf(firmwareAt(place)));
}

std::filesystem::path EquipmentPlan::firmwareFolder() const {
  return maker ? maker->firmwareFolder : firmwareDirectory();
}

void plugIn(const EquipmentPlan& plan, rig::VirtualBus& bus) {
  if (plan.keptIn) {
    std::filesystem::create_directories(*plan.keptIn);
  }
  const auto plugInBoard = [&plan, &bus](std::size_t place) {
    const auto faults = plan.faults.find(place);
    const auto& kind = plan.kindAt(place);
    const auto serialNumber = plan.serialNumberAt(place);
    bus.plugIn(std::make_unique<rig::VirtualBoard>(
        kind, serialNumber, faults == plan.faults.end() ? rig::Faults{} : faults->second,
        plan.keptIn ? rig::BoardMemory(kind.flashSize, *plan.keptIn / serialNumber)
                    : rig::BoardMemory(kind.flashSize)));
  };
  for (std::size_t place = 0; place < plan.boards; ++place) {
    plugInBoard(place);
  }
  for (std::size_t extra = 0; extra < plan.attachedUnlisted; ++extra) {
    plugInBoard(plan.boards + plan.listedButAbsent + extra);
  }
}

std::vector<rig::ServedDevice> servedDevices(const EquipmentPlan& plan, const std::string& serviceAddress) {
  if (plan.maker) {
    return rig::servedFrom(plan.maker->devices, serviceAddress);
  }
  std::vector<rig::ServedDevice> devices;
  devices.reserve(plan.boards + plan.listedButAbsent);
  for (std::size_t place = 0; place < plan.boards + plan.listedButAbsent; ++place) {
    devices.push_back(servedDeviceAt(place, serviceAddress));
  }
  return devices;
}

}  // namespace karvex::app
