#include "MIDIKitIO/objects/MIDIDevice.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

#include "MIDIKitIO/objects/MIDIEndpoint.hpp"
#include "MIDIKitIO/objects/MIDIEntity.hpp"
#include "MIDIKitIO/objects/ObjectList.hpp"
#include "MIDIKitIO/objects/SystemObjects.hpp"
#include "MIDIKitInternals/Text.hpp"

namespace midikit::io {
namespace {

template <class Endpoint>
void append(std::vector<Endpoint>& all, std::vector<Endpoint> more) {
  std::move(more.begin(), more.end(), std::back_inserter(all));
}

}  // namespace

std::vector<MIDIEntity> MIDIDevice::entities(const MIDIService& service) const {
  return listObjects(
      service.MIDIDeviceGetNumberOfEntities(coreMIDIObjectRef),
      [&](std::size_t index) { return service.MIDIDeviceGetEntity(coreMIDIObjectRef, index); },
      [&](MIDIObjectRef ref) { return makeEntity(service, ref); });
}

std::vector<MIDIInputEndpoint> MIDIDevice::inputs(const MIDIService& service) const {
  std::vector<MIDIInputEndpoint> all;
  for (const auto& entity : entities(service)) {
    append(all, entity.inputs(service));
  }
  return all;
}

std::vector<MIDIOutputEndpoint> MIDIDevice::outputs(const MIDIService& service) const {
  std::vector<MIDIOutputEndpoint> all;
  for (const auto& entity : entities(service)) {
    append(all, entity.outputs(service));
  }
  return all;
}

bool MIDIDevice::exists(const MIDIService& service) const {
  const auto devices = systemDevices(service);
  return std::any_of(devices.begin(), devices.end(),
                     [this](const MIDIDevice& device) { return device.uniqueID == uniqueID; });
}

std::string MIDIDevice::debugText(const MIDIService& service) const {
  return "MIDIDevice(name: " + internals::quoted(name) + ", uniqueID: " + std::to_string(uniqueID) +
         ", exists: " + (exists(service) ? "true" : "false") + ")";
}

}  // namespace midikit::io
