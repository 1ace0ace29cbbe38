#include "records/BootableDevice.hpp"

namespace {

template <typename... Fields>
std::size_t hashOf(const Fields&... fields) {
  std::size_t result = 0;
  // The usual mixing step: the golden ratio's bits keep equal fields in other places apart.
  ((result ^= std::hash<Fields>()(fields) + 0x9E3779B97F4A7C15U + (result << 6U) + (result >> 2U)), ...);
  return result;
}

}  // namespace

std::size_t std::hash<karvex::records::BootableDevice>::operator()(
    const karvex::records::BootableDevice& device) const noexcept {
  return hashOf(device.id, device.midiRef, device.deviceName, device.isOffline, device.portSerialNumber,
                device.firmwareServerURL, device.firmwareDir, device.firmwareFile, device.firmwareName,
                device.firmwareVersion, device.currentVersion, device.mcu, device.sequenceNumber,
                device.setupDelay, device.status, device.USBVendorId, device.USBProductId,
                device.USBBCDDevice, device.dlProgress, device.ulProgress);
}
