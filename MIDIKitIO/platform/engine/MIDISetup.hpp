#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "MIDIKitIO/platform/engine/DeviceDescription.hpp"
#include "MIDIKitIO/platform/engine/MIDIObject.hpp"
#include "MIDIKitIO/platform/engine/References.hpp"
#include "MIDIKitIO/platform/engine/UniqueIds.hpp"

namespace midikit::io::engine {

/// The tree of devices, entities and endpoints, the virtual endpoints, and their properties. Each list is in
/// the order in which its objects came. Not locked.
class MIDISetup {
 public:
  using Ref = MIDIObjectRef;

  /// Endpoints have a "protocol" property from the generation with event lists on. The references must
  /// outlive the setup.
  MIDISetup(References& references, bool hasProtocols)
      : references_(references), hasProtocols_(hasProtocols) {}

  Ref addDevice(const DeviceDescription& description);
  /// To a device that is there. `shared` is what the device and all below it have alike.
  Ref addEntity(Ref device, const EntityDescription& description, const PropertyDictionary& shared);
  /// One of this program's own. `kind` is that of an endpoint.
  Ref addVirtualEndpoint(MIDIObjectKind kind, const std::string& name, MIDIProtocolID protocol);
  /// One of another program; `kind` as above.
  Ref addForeignEndpoint(MIDIObjectKind kind, const EndpointDescription& description);
  /// Takes the object and all below it out. Harmless when there is none.
  void remove(Ref object);

  /// Null if there is none.
  const MIDIObject* find(Ref object) const;
  /// The endpoint with that unique ID, or 0.
  Ref endpointWithUniqueId(std::int32_t id) const;
  /// The object and all below it, parents before their children; empty if there is none.
  std::vector<Ref> subtree(Ref object) const;

  const std::vector<Ref>& devices() const { return devices_; }
  const std::vector<Ref>& sources() const { return sources_; }
  const std::vector<Ref>& destinations() const { return destinations_; }

  /// @name As the operations of MIDIService
  /// @{
  OSStatus stringProperty(Ref object, std::string_view key, std::optional<std::string>& out) const;
  OSStatus integerProperty(Ref object, std::string_view key, std::int32_t& out) const;
  OSStatus dictionaryProperty(Ref object, std::string_view key, std::optional<PropertyDictionary>& out) const;
  OSStatus properties(Ref object, PropertyDictionary& out, bool deep) const;
  OSStatus setStringProperty(Ref object, std::string_view key, std::string_view value);
  OSStatus setIntegerProperty(Ref object, std::string_view key, std::int32_t value);
  /// @}

  /// Sets any property to any kind of value, as a driver may. Only a unique ID must be a number that no other
  /// object has.
  OSStatus setProperty(Ref object, std::string_view key, PropertyValue value);
  OSStatus removeProperty(Ref object, std::string_view key);
  /// From now on, reading this text or dictionary succeeds and returns nothing.
  OSStatus answerWithNone(Ref object, std::string_view key);

 private:
  struct Making;

  MIDIObject& make(const Making& making);
  void fill(MIDIObject& object, const Making& making);
  std::string usualDisplayName(const MIDIObject& endpoint) const;
  PropertyDictionary deepProperties(const MIDIObject& object) const;
  template <typename Value>
  OSStatus get(Ref object, std::string_view key, std::optional<Value>& out) const;

  References& references_;
  bool hasProtocols_;
  UniqueIds uniqueIds_;
  std::map<Ref, MIDIObject> objects_;
  std::vector<Ref> devices_;
  std::vector<Ref> sources_;
  std::vector<Ref> destinations_;
};

}  // namespace midikit::io::engine
