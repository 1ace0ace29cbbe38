#include "rig/midi/DeviceDescription.hpp"

namespace karvex::rig {

DeviceDescription simpleDevice(const std::string& name) {
  DeviceDescription device{.name = name};
  device.entities.push_back({.name = name, .sources = {{.name = name}}, .destinations = {{.name = name}}});
  return device;
}

}  // namespace karvex::rig
