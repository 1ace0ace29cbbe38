#include "device/EquipmentReport.hpp"

#include <nlohmann/json.hpp>

namespace karvex::device {

std::string jsonOf(const records::DeviceConfiguration& configuration) {
  auto devices = nlohmann::ordered_json::array();
  for (const auto& device : configuration.devices) {
    devices.push_back({
        {"portName", device.portName},
        {"deviceName", device.deviceName},
        {"serialNumber", device.serialNumber},
        {"USBvendorId", device.USBvendorId},
        {"USBproductId", device.USBproductId},
        {"USBbcdDevice", device.USBbcdDevice},
        {"USBproductName", device.USBproductName},
    });
  }
  return nlohmann::ordered_json({{"devices", devices}}).dump();
}

}  // namespace karvex::device
