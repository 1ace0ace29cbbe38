#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "MIDIKitIO/platform/MIDIService.hpp"
#include "MIDIKitIO/platform/engine/MIDIClients.hpp"
#include "MIDIKitIO/platform/engine/MIDIList.hpp"
#include "MIDIKitIO/platform/engine/MIDIOperation.hpp"
#include "MIDIKitIO/platform/engine/MIDIReceiver.hpp"
#include "MIDIKitIO/platform/engine/MIDIRouting.hpp"
#include "MIDIKitIO/platform/engine/MIDISetup.hpp"
#include "MIDIKitIO/platform/engine/References.hpp"
#include "MIDIKitIO/platform/engine/SetupEditor.hpp"
#include "MIDIKitIO/platform/engine/ThruConnectionStore.hpp"
#include "MIDIKitIO/platform/engine/ThruConnections.hpp"
#include "foundation/Runtime.hpp"

namespace midikit::io::engine {

/// A whole MIDI service in memory, which lacks nothing but equipment: that comes from who derives from it.
/// All operations may be called on any thread, the blocks that it runs included.
///
/// Blocks run on the runtime's threads: for each client, one at a time its notify block, and beside that one
/// at a time what its ports and virtual endpoints receive. On a virtual runtime the order of all of it is the
/// same every time. Each change of the setup is there before its messages are; all clients get the messages
/// of all changes in the order of the changes, the client that made the change too.
///
/// Lists go to their readers at once, whatever their time stamps say, and in the form that the reader wants
/// (ListConverter). When a connection has ended, what waits for it is dropped; a block that is running at
/// that moment runs on.
class MIDIServiceEngine : public MIDIService {
 public:
  using Ref = MIDIObjectRef;
  using OSStatus = io::OSStatus;

  ~MIDIServiceEngine() override;

  PlatformVersion platformVersion() const override { return version_; }
  /// Nanoseconds on the runtime's clock.
  std::uint64_t machAbsoluteTime() const override;

  OSStatus MIDIClientCreateWithBlock(const std::string& name, Ref& outClient, MIDINotifyBlock block) override;

  std::size_t MIDIGetNumberOfDevices() const override;
  Ref MIDIGetDevice(std::size_t index) const override;
  std::size_t MIDIGetNumberOfSources() const override;
  Ref MIDIGetSource(std::size_t index) const override;
  std::size_t MIDIGetNumberOfDestinations() const override;
  Ref MIDIGetDestination(std::size_t index) const override;

  std::size_t MIDIDeviceGetNumberOfEntities(Ref device) const override;
  Ref MIDIDeviceGetEntity(Ref device, std::size_t index) const override;
  std::size_t MIDIEntityGetNumberOfSources(Ref entity) const override;
  Ref MIDIEntityGetSource(Ref entity, std::size_t index) const override;
  std::size_t MIDIEntityGetNumberOfDestinations(Ref entity) const override;
  Ref MIDIEntityGetDestination(Ref entity, std::size_t index) const override;
  OSStatus MIDIEntityGetDevice(Ref entity, Ref& outDevice) const override;
  OSStatus MIDIEndpointGetEntity(Ref endpoint, Ref& outEntity) const override;

  OSStatus MIDIObjectGetStringProperty(Ref object, std::string_view key,
                                       std::optional<std::string>& out) const override;
  OSStatus MIDIObjectGetIntegerProperty(Ref object, std::string_view key, std::int32_t& out) const override;
  OSStatus MIDIObjectGetDictionaryProperty(Ref object, std::string_view key,
                                           std::optional<PropertyDictionary>& out) const override;
  /// Deep, the children stand under "entities", "sources" and "destinations", each under its place from "0".
  OSStatus MIDIObjectGetProperties(Ref object, PropertyDictionary& out, bool deep) const override;
  OSStatus MIDIObjectSetStringProperty(Ref object, std::string_view key, std::string_view value) override;
  OSStatus MIDIObjectSetIntegerProperty(Ref object, std::string_view key, std::int32_t value) override;

  OSStatus MIDIInputPortCreateWithProtocol(Ref client, const std::string& name, MIDIProtocolID protocol,
                                           Ref& outPort, MIDIReceiveBlock block) override;
  OSStatus MIDIInputPortCreateWithBlock(Ref client, const std::string& name, Ref& outPort,
                                        MIDIReadBlock block) override;
  OSStatus MIDIOutputPortCreate(Ref client, const std::string& name, Ref& outPort) override;
  OSStatus MIDIPortDispose(Ref port) override;
  OSStatus MIDIPortConnectSource(Ref port, Ref source, ConnectionToken token) override;
  OSStatus MIDIPortDisconnectSource(Ref port, Ref source) override;

  OSStatus MIDIDestinationCreateWithProtocol(Ref client, const std::string& name, MIDIProtocolID protocol,
                                             Ref& outEndpoint, MIDIReceiveBlock block) override;
  OSStatus MIDIDestinationCreateWithBlock(Ref client, const std::string& name, Ref& outEndpoint,
                                          MIDIReadBlock block) override;
  OSStatus MIDISourceCreateWithProtocol(Ref client, const std::string& name, MIDIProtocolID protocol,
                                        Ref& outEndpoint) override;
  OSStatus MIDISourceCreate(Ref client, const std::string& name, Ref& outEndpoint) override;
  OSStatus MIDIEndpointDispose(Ref endpoint) override;

  OSStatus MIDISend(Ref port, Ref destination, const MIDIPacketList& list) override;
  OSStatus MIDISendEventList(Ref port, Ref destination, const MIDIEventList& list) override;
  OSStatus MIDIReceived(Ref source, const MIDIPacketList& list) override;
  OSStatus MIDIReceivedEventList(Ref source, const MIDIEventList& list) override;

  void MIDIThruConnectionParamsInitialize(MIDIThruConnectionParams& out) const override;
  OSStatus MIDIThruConnectionCreate(const std::optional<std::string>& ownerID,
                                    std::span<const std::uint8_t> parameters, Ref& outConnection) override;
  OSStatus MIDIThruConnectionDispose(Ref connection) override;
  OSStatus MIDIThruConnectionFind(const std::string& ownerID,
                                  std::vector<std::uint8_t>& outReferences) const override;

 protected:
  /// The runtime must outlive the service. Before platform version 11.0 the operations on protocols and event
  /// lists give status::unknownError. Services that are made with the same store, one after the other or
  /// together, share their persistent thru connections.
  MIDIServiceEngine(karvex::foundation::Runtime& runtime, PlatformVersion version,
                    std::shared_ptr<ThruConnectionStore> store);

  /// No block runs behind this, unless it is a block that calls it. Lists and notifications that wait are
  /// dropped. The destructor of who derives begins with it: a block under way may be using the service.
  void close();

  /// @name The equipment's side
  /// What the operations of MIDIService can't do. None of it counts as a call.
  /// @{

  /// Changes the setup. Clients get what the editor collected. Nothing but the editor may be used inside.
  void edit(const std::function<void(SetupEditor&)>& work);
  /// Looks at the setup. Nothing of the service may be used inside.
  template <typename Work>
  auto inspect(const Work& work) const {
    const std::lock_guard lock(mutex_);
    return work(setup_);
  }

  /// Sets any property to any kind of value, as a driver does. Clients get `propertyChanged`.
  OSStatus setProperty(Ref object, std::string_view key, PropertyValue value);
  /// From now on the object doesn't have the property, not even a unique ID. Clients get `propertyChanged`.
  OSStatus removeProperty(Ref object, std::string_view key);
  /// From now on, until it is set, reading this text or dictionary succeeds and gives nothing.
  OSStatus answerWithNone(Ref object, std::string_view key);

  /// Clients get this message, whatever is in it.
  void notify(const MIDINotification& message);
  /// A list comes from a source that isn't one of this program's own.
  OSStatus sendFromEquipment(Ref source, const MIDIList& list);
  /// A list comes to one of this program's own destinations from outside. `sender` tells the streams of
  /// several senders apart; it must not be the reference of an object.
  OSStatus sendFromOutside(Ref destination, Ref sender, const MIDIList& list);
  /// What comes to a destination that isn't one of this program's own goes to this block from now on, on the
  /// queue. The queue must be serial, and be there for as long as the destination is.
  OSStatus readAsEquipment(Ref destination, karvex::foundation::Queue& queue, MIDIReader reader);
  /// What this program's own source sends goes to this block too, on the queue, for which the same holds.
  OSStatus listenAsEquipment(Ref source, karvex::foundation::Queue& queue, MIDIReader reader);
  /// The sources that some port or thru connection wants to hear.
  std::set<Ref> heardSources() const;
  /// The names under which the clients were made, in that order.
  std::vector<std::string> clientNames() const;
  /// @}

  /// @name What happens, for who derives
  /// Called on the thread that does it, without a lock.
  /// @{

  /// An operation begins. Gives the status with which it must fail, if it must. `object` is its first
  /// argument, or 0.
  virtual std::optional<OSStatus> begin(MIDIOperation operation, Ref object) const;
  /// The result of heardSources() may be another one.
  virtual void routesChanged() {}
  /// One of this program's own endpoints is there; its operation hasn't returned.
  virtual void ownEndpointAdded(Ref /*endpoint*/) {}
  /// It has gone.
  virtual void ownEndpointRemoved(Ref /*endpoint*/) {}
  /// @}

  karvex::foundation::Runtime& runtime() const { return runtime_; }

 private:
  /// Begins the call and, unless it must fail, does it under the lock.
  template <typename Work>
  OSStatus perform(MIDIOperation operation, Ref object, const Work& work) const {
    if (const auto failure = begin(operation, object)) {
      return *failure;
    }
    const std::lock_guard lock(mutex_);
    return work();
  }
  /// The same for operations that give a count or a reference: 0 when they must fail.
  template <typename Work>
  std::invoke_result_t<Work> look(MIDIOperation operation, Ref object, const Work& work) const {
    if (begin(operation, object)) {
      return 0;
    }
    const std::lock_guard lock(mutex_);
    return work();
  }
  using Children = std::vector<Ref> MIDIObject::*;
  std::size_t countChildren(MIDIOperation operation, Ref parent, Children list) const;
  Ref child(MIDIOperation operation, Ref parent, Children list, std::size_t index) const;

  struct VirtualEndpoint {
    MIDIObjectKind kind;
    const std::string& name;
    MIDIProtocolID protocol;
  };
  bool hasProtocols() const { return version_ >= PlatformVersion{.major = 11, .minor = 0}; }
  OSStatus checkProtocol(MIDIProtocolID protocol) const;
  OSStatus checkEndpoint(Ref endpoint, MIDIObjectKind kind) const;
  OSStatus checkSource(Ref source, bool wantsOwn) const;
  OSStatus addPort(Ref client, std::optional<MIDIReader> reader, Ref& out);
  OSStatus addVirtualEndpoint(Ref client, const VirtualEndpoint& description,
                              std::optional<MIDIReader> reader, Ref& out);
  OSStatus send(Ref port, Ref destination, const SharedMIDIList& list);
  OSStatus receive(Ref source, const SharedMIDIList& list, bool isOwn);
  /// Tells that a property was changed, if it was.
  OSStatus tellChange(OSStatus result, Ref object, std::string_view key);
  OSStatus tellAdded(OSStatus result, Ref endpoint);
  OSStatus tellRoutes(OSStatus result);

  karvex::foundation::Runtime& runtime_;
  const PlatformVersion version_;
  mutable std::mutex mutex_;  ///< of all below; no block runs under it
  References references_;
  MIDISetup setup_;
  MIDIClients clients_;
  MIDIRouting routing_;
  ThruConnections thru_;
};

}  // namespace midikit::io::engine
