#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "MIDIKitIO/platform/MIDIThruConnectionParams.hpp"

namespace midikit::io {

/// The platform's MIDI service: all that the layer asks of it. The operations bear the platform's own names.
///
/// Objects are asked for by reference; a reference that is not or no longer there returns a failure status, a
/// count of 0, or the reference 0. Out values are written on success alone. Every operation may be called on
/// any thread; blocks run on threads of the service, never under a lock that an operation needs, so that a
/// block may call any of them.
class MIDIService {
 public:
  virtual ~MIDIService() = default;
  MIDIService() = default;
  MIDIService(const MIDIService&) = delete;
  MIDIService& operator=(const MIDIService&) = delete;

  /// The platform that this service behaves like. Never changes.
  [[nodiscard]] virtual PlatformVersion platformVersion() const = 0;

  /// The host time, in whose units time stamps are; monotonic.
  [[nodiscard]] virtual std::uint64_t machAbsoluteTime() const = 0;

  /// @name Clients
  /// A client lives until the process ends.
  /// @{
  [[nodiscard]] virtual OSStatus MIDIClientCreateWithBlock(const std::string& name, MIDIObjectRef& outClient,
                                                           MIDINotifyBlock block) = 0;
  /// @}

  /// @name The lists of the system, by index
  /// @{
  [[nodiscard]] virtual std::size_t MIDIGetNumberOfDevices() const = 0;
  [[nodiscard]] virtual MIDIObjectRef MIDIGetDevice(std::size_t index) const = 0;
  [[nodiscard]] virtual std::size_t MIDIGetNumberOfSources() const = 0;
  [[nodiscard]] virtual MIDIObjectRef MIDIGetSource(std::size_t index) const = 0;
  [[nodiscard]] virtual std::size_t MIDIGetNumberOfDestinations() const = 0;
  [[nodiscard]] virtual MIDIObjectRef MIDIGetDestination(std::size_t index) const = 0;
  /// @}

  /// @name The tree of devices, entities and endpoints
  /// @{
  [[nodiscard]] virtual std::size_t MIDIDeviceGetNumberOfEntities(MIDIObjectRef device) const = 0;
  [[nodiscard]] virtual MIDIObjectRef MIDIDeviceGetEntity(MIDIObjectRef device, std::size_t index) const = 0;
  [[nodiscard]] virtual std::size_t MIDIEntityGetNumberOfSources(MIDIObjectRef entity) const = 0;
  [[nodiscard]] virtual MIDIObjectRef MIDIEntityGetSource(MIDIObjectRef entity, std::size_t index) const = 0;
  [[nodiscard]] virtual std::size_t MIDIEntityGetNumberOfDestinations(MIDIObjectRef entity) const = 0;
  [[nodiscard]] virtual MIDIObjectRef MIDIEntityGetDestination(MIDIObjectRef entity,
                                                               std::size_t index) const = 0;
  /// 0 when the entity has no device.
  [[nodiscard]] virtual OSStatus MIDIEntityGetDevice(MIDIObjectRef entity,
                                                     MIDIObjectRef& outDevice) const = 0;
  /// 0 when the endpoint has no entity, as a virtual one.
  [[nodiscard]] virtual OSStatus MIDIEndpointGetEntity(MIDIObjectRef endpoint,
                                                       MIDIObjectRef& outEntity) const = 0;
  /// @}

  /// @name Properties, by the keys of MIDIPropertyKeys.hpp
  /// A property that is not set, or is of another kind, returns a failure status. A text or dictionary may
  /// come back as none with success.
  /// @{
  [[nodiscard]] virtual OSStatus MIDIObjectGetStringProperty(MIDIObjectRef object, std::string_view key,
                                                             std::optional<std::string>& out) const = 0;
  [[nodiscard]] virtual OSStatus MIDIObjectGetIntegerProperty(MIDIObjectRef object, std::string_view key,
                                                              std::int32_t& out) const = 0;
  [[nodiscard]] virtual OSStatus MIDIObjectGetDictionaryProperty(
      MIDIObjectRef object, std::string_view key, std::optional<PropertyDictionary>& out) const = 0;
  /// All properties of the object by key; with `deep`, those of its children too.
  [[nodiscard]] virtual OSStatus MIDIObjectGetProperties(MIDIObjectRef object, PropertyDictionary& out,
                                                         bool deep) const = 0;
  [[nodiscard]] virtual OSStatus MIDIObjectSetStringProperty(MIDIObjectRef object, std::string_view key,
                                                             std::string_view value) = 0;
  /// A unique ID that another object has returns `idNotUnique`.
  [[nodiscard]] virtual OSStatus MIDIObjectSetIntegerProperty(MIDIObjectRef object, std::string_view key,
                                                              std::int32_t value) = 0;
  /// @}

  /// @name Ports
  /// @{
  [[nodiscard]] virtual OSStatus MIDIInputPortCreateWithProtocol(MIDIObjectRef client,
                                                                 const std::string& name,
                                                                 MIDIProtocolID protocol,
                                                                 MIDIObjectRef& outPort,
                                                                 MIDIReceiveBlock block) = 0;
  [[nodiscard]] virtual OSStatus MIDIInputPortCreateWithBlock(MIDIObjectRef client, const std::string& name,
                                                              MIDIObjectRef& outPort,
                                                              MIDIReadBlock block) = 0;
  [[nodiscard]] virtual OSStatus MIDIOutputPortCreate(MIDIObjectRef client, const std::string& name,
                                                      MIDIObjectRef& outPort) = 0;
  /// No block of the port runs any more once this has returned, unless it is this thread that runs one.
  virtual OSStatus MIDIPortDispose(MIDIObjectRef port) = 0;
  virtual OSStatus MIDIPortConnectSource(MIDIObjectRef port, MIDIObjectRef source, ConnectionToken token) = 0;
  virtual OSStatus MIDIPortDisconnectSource(MIDIObjectRef port, MIDIObjectRef source) = 0;
  /// @}

  /// @name Virtual endpoints
  /// @{
  [[nodiscard]] virtual OSStatus MIDIDestinationCreateWithProtocol(MIDIObjectRef client,
                                                                   const std::string& name,
                                                                   MIDIProtocolID protocol,
                                                                   MIDIObjectRef& outEndpoint,
                                                                   MIDIReceiveBlock block) = 0;
  [[nodiscard]] virtual OSStatus MIDIDestinationCreateWithBlock(MIDIObjectRef client, const std::string& name,
                                                                MIDIObjectRef& outEndpoint,
                                                                MIDIReadBlock block) = 0;
  [[nodiscard]] virtual OSStatus MIDISourceCreateWithProtocol(MIDIObjectRef client, const std::string& name,
                                                              MIDIProtocolID protocol,
                                                              MIDIObjectRef& outEndpoint) = 0;
  [[nodiscard]] virtual OSStatus MIDISourceCreate(MIDIObjectRef client, const std::string& name,
                                                  MIDIObjectRef& outEndpoint) = 0;
  virtual OSStatus MIDIEndpointDispose(MIDIObjectRef endpoint) = 0;
  /// @}

  /// @name Delivery
  /// Send goes through an output port to a destination; Received comes from a virtual source to all that
  /// listen to it. The lists are copied before the call returns.
  /// @{
  [[nodiscard]] virtual OSStatus MIDISend(MIDIObjectRef port, MIDIObjectRef destination,
                                          const MIDIPacketList& list) = 0;
  [[nodiscard]] virtual OSStatus MIDISendEventList(MIDIObjectRef port, MIDIObjectRef destination,
                                                   const MIDIEventList& list) = 0;
  [[nodiscard]] virtual OSStatus MIDIReceived(MIDIObjectRef source, const MIDIPacketList& list) = 0;
  [[nodiscard]] virtual OSStatus MIDIReceivedEventList(MIDIObjectRef source, const MIDIEventList& list) = 0;
  /// @}

  /// @name Thru connections
  /// `parameters` are the bytes of a MIDIThruConnectionParams. With an owner the connection outlives the
  /// program; without, it ends with it.
  /// @{
  virtual void MIDIThruConnectionParamsInitialize(MIDIThruConnectionParams& out) const = 0;
  [[nodiscard]] virtual OSStatus MIDIThruConnectionCreate(const std::optional<std::string>& ownerID,
                                                          std::span<const std::uint8_t> parameters,
                                                          MIDIObjectRef& outConnection) = 0;
  virtual OSStatus MIDIThruConnectionDispose(MIDIObjectRef connection) = 0;
  /// The references of the owner's persistent connections, each as 4 bytes in the processor's order.
  [[nodiscard]] virtual OSStatus MIDIThruConnectionFind(const std::string& ownerID,
                                                        std::vector<std::uint8_t>& outReferences) const = 0;
  /// @}
};

}  // namespace midikit::io
