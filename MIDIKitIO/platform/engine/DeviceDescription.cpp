#include "MIDIKitIO/platform/engine/DeviceDescription.hpp"

namespace midikit::io::engine {

DeviceDescription simpleDevice(const std::string& name) {
  DeviceDescription device{.name = name};
  device.entities.push_back({.name = name, .sources = {{.name = name}}, .destinations = {{.name = name}}});
  return device;
}

}  // namespace midikit::io::engine
