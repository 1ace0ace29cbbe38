#include "app/rig/RigSupport.hpp"

#include <fmt/format.h>

#include <cstdio>

#include "foundation/SystemRuntime.hpp"
#include "foundation/VirtualRuntime.hpp"

namespace karvex::app {

std::unique_ptr<foundation::Runtime> makeRuntime(const CommonOptions& common) {
  if (common.realTime) {
    return std::make_unique<foundation::SystemRuntime>();
  }
  return std::make_unique<foundation::VirtualRuntime>();
}

void say(const std::string& line) {
  fmt::print("{}\n", line);
  std::fflush(stdout);
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
