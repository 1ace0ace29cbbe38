#pragma once

#include <optional>
#include <string>
#include <vector>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"

namespace midikit::io::engine {

/// One source or destination to be made. Without a `name` it has no such property. "uniqueID" among the
/// properties is kept if no other object has it; otherwise, and without it, the service assigns one.
/// "displayName" and "protocol" have usual values unless they are among the properties.
struct EndpointDescription {
  std::optional<std::string> name;
  PropertyDictionary properties;
};

/// One entity to be made; name and properties as for an endpoint.
struct EntityDescription {
  std::optional<std::string> name;
  PropertyDictionary properties;
  std::vector<EndpointDescription> sources;
  std::vector<EndpointDescription> destinations;
};

/// A whole device to be made; name and properties as for an endpoint.
struct DeviceDescription {
  std::optional<std::string> name;
  PropertyDictionary properties;
  /// What the device and each object below it have alike, as a driver has it: manufacturer, model and so
  /// on.
  PropertyDictionary sharedProperties;
  std::vector<EntityDescription> entities;
};

/// A device with one entity that has one source and one destination, all of that name.
DeviceDescription simpleDevice(const std::string& name);

}  // namespace midikit::io::engine
