#include "MIDIKitIO/objects/MIDIDevices.hpp"

#include "MIDIKitCore/detail/FieldHash.hpp"
#include "MIDIKitIO/objects/SystemObjects.hpp"

namespace midikit::io {

void MIDIDevices::refresh(const MIDIService& service) {
  devices = systemDevices(service);
}

std::unordered_map<MIDIDevice, std::vector<MIDIInputEndpoint>> MIDIDevices::inputsByDevice(
    const MIDIService& service) const {
  std::unordered_map<MIDIDevice, std::vector<MIDIInputEndpoint>> map;
  for (const auto& device : devices) {
    map.emplace(device, device.inputs(service));
  }
  return map;
}

std::unordered_map<MIDIDevice, std::vector<MIDIOutputEndpoint>> MIDIDevices::outputsByDevice(
    const MIDIService& service) const {
  std::unordered_map<MIDIDevice, std::vector<MIDIOutputEndpoint>> map;
  for (const auto& device : devices) {
    map.emplace(device, device.outputs(service));
  }
  return map;
}

}  // namespace midikit::io

std::size_t std::hash<midikit::io::MIDIDevices>::operator()(
    const midikit::io::MIDIDevices& devices) const noexcept {
  return midikit::core::hashOf(devices.devices);
}
