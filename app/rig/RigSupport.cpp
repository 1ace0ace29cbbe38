#include "app/rig/RigSupport.hpp"

#include <fmt/format.h>

#include <cstdio>

#include "foundation/run/SystemRuntime.hpp"
#include "foundation/run/VirtualRuntime.hpp"

namespace karvex::app {

std::unique_ptr<foundation::Runtime> makeRuntime(const CommonOptions& common) {
  if (common.realTime) {
    return std::make_unique<foundation::SystemRuntime>();
  }
  return std::make_unique<foundation::VirtualRuntime>();
}

std::string counted(std::uint64_t number, std::string_view thing) {
  return fmt::format("{} {}{}", number, thing, number == 1 ? "" : "s");
}

bool openResults(std::ofstream& file, const std::optional<std::filesystem::path>& path) {
  if (!path) {
    return true;
  }
  file.open(*path, std::ios::binary | std::ios::trunc);
  if (!file) {
    fmt::print(stderr, "karvex-rig: {} can't be written.\n", path->string());
  }
  return file.good();
}

bool closeResults(std::ofstream& file, const std::optional<std::filesystem::path>& path) {
  if (!path) {
    return true;
  }
  file.close();
  if (!file) {
    fmt::print(stderr, "karvex-rig: {} could not be written to its end.\n", path->string());
  }
  return file.good();
}

void showBus(device::DeviceExplorer& explorer) {
  explorer.scanUSBDevices();
  say("Boards on the simulated bus:");
  for (const auto& device : explorer.devices.get()) {
    say(fmt::format("  {:<22} {:04X}:{:04X} revision {:04X}  {}", device.deviceName, device.USBvendorId,
                    device.USBproductId, device.USBbcdDevice, device.portName));
  }
}

}  // namespace karvex::app
