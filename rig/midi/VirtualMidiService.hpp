#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "MIDIKitIO/platform/MIDIService.hpp"
#include "foundation/Runtime.hpp"
#include "foundation/SerialQueue.hpp"
#include "rig/midi/CallLedger.hpp"
#include "rig/midi/DeviceDescription.hpp"
#include "rig/midi/MidiClients.hpp"
#include "rig/midi/MidiList.hpp"
#include "rig/midi/MidiReceiver.hpp"
#include "rig/midi/MidiRouting.hpp"
#include "rig/midi/MidiSetup.hpp"
#include "rig/midi/References.hpp"
#include "rig/midi/ThruConnectionStore.hpp"
#include "rig/midi/ThruConnections.hpp"

namespace karvex::rig {

/// A whole MIDI service in memory, with equipment that is described rather than attached. All operations may
/// be called on any thread, the blocks that it runs included.
///
/// Blocks run on the runtime's threads: for each client, one at a time its notify block, and beside that one
/// at a time what its ports and virtual endpoints receive. On a virtual runtime the order of all of it is the
/// same every time. Each change of the setup is there before its messages are; all clients get the messages
/// of all changes in the order of the changes, the client that made the change too.
///
/// Lists go to their readers at once, whatever their time stamps say, and in the form that the reader wants
/// (ListConverter). When a connection has ended, what waits for it is dropped; a block that is running at
/// that moment runs on.
class VirtualMidiService final : public midikit::io::MIDIService {
 public:
  using Ref = midikit::io::MIDIObjectRef;
  using OSStatus = midikit::io::OSStatus;

  /// The runtime must outlive the service. Before platform version 11.0 the operations on protocols and event
  /// lists give status::unknownError. Services that are made with the same store, one after the other or
  /// together, share their persistent thru connections.
  explicit VirtualMidiService(
      foundation::Runtime& runtime, midikit::io::PlatformVersion version = {.major = 13, .minor = 0},
      std::shared_ptr<ThruConnectionStore> store = std::make_shared<ThruConnectionStore>());
  /// No block runs behind this, unless it is a block that destroys the service. Lists and notifications that
  /// wait are dropped.
  ~VirtualMidiService() override;

  /// The counters of calls, and the failures to come, of the operations of MIDIService.
  CallLedger& calls() const { return calls_; }

  /// @name The equipment's side: what the operations of MIDIService can't do
  /// None of it counts as a call.
  /// @{

  /// Attaches a device. Clients get `added` for the device, each entity, and each endpoint, parents first,
  /// and one `setupChanged` behind them.
  Ref addDevice(const DeviceDescription& description);
  /// Takes a device away. Clients get `removed` for all that goes, children first, and one `setupChanged`
  /// behind them. False if there is no such device.
  bool removeDevice(Ref device);

  /// Sets any property to any kind of value, as a driver does. Clients get `propertyChanged`.
  OSStatus setProperty(Ref object, std::string_view key, midikit::io::PropertyValue value);
  /// The same for the object and all below it, as what concerns a whole device. Clients get `propertyChanged`
  /// for the object alone, and `setupChanged` behind it.
  OSStatus setPropertyThroughout(Ref object, std::string_view key, const midikit::io::PropertyValue& value);
  /// From now on the object doesn't have the property, not even a unique ID. Clients get `propertyChanged`.
  OSStatus removeProperty(Ref object, std::string_view key);
  /// From now on, until it is set, reading this text or dictionary succeeds and gives nothing.
  OSStatus answerWithNone(Ref object, std::string_view key);

  /// Clients get this message, whatever is in it.
  void notify(const midikit::io::MIDINotification& message);
  /// The equipment behind a device's source sends a list.
  OSStatus sendFromEquipment(Ref source, const MidiList& list);
  /// What comes to a device's destination goes to this block from now on, on a thread of the runtime.
  OSStatus readAsEquipment(Ref destination, MidiReader reader);
  /// The names under which the clients were made, in that order.
  std::vector<std::string> clientNames() const;
  /// @}

  midikit::io::PlatformVersion platformVersion() const override { return version_; }
  /// Nanoseconds on the runtime's clock.
  std::uint64_t machAbsoluteTime() const override;

  OSStatus MIDIClientCreateWithBlock(const std::string& name, Ref& outClient,
                                     midikit::io::MIDINotifyBlock block) override;

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
  OSStatus MIDIObjectGetDictionaryProperty(
      Ref object, std::string_view key, std::optional<midikit::io::PropertyDictionary>& out) const override;
  /// Deep, the children stand under "entities", "sources" and "destinations", each under its place from "0".
  OSStatus MIDIObjectGetProperties(Ref object, midikit::io::PropertyDictionary& out,
                                   bool deep) const override;
  OSStatus MIDIObjectSetStringProperty(Ref object, std::string_view key, std::string_view value) override;
  OSStatus MIDIObjectSetIntegerProperty(Ref object, std::string_view key, std::int32_t value) override;

  OSStatus MIDIInputPortCreateWithProtocol(Ref client, const std::string& name,
                                           midikit::io::MIDIProtocolID protocol, Ref& outPort,
                                           midikit::io::MIDIReceiveBlock block) override;
  OSStatus MIDIInputPortCreateWithBlock(Ref client, const std::string& name, Ref& outPort,
                                        midikit::io::MIDIReadBlock block) override;
  OSStatus MIDIOutputPortCreate(Ref client, const std::string& name, Ref& outPort) override;
  OSStatus MIDIPortDispose(Ref port) override;
  OSStatus MIDIPortConnectSource(Ref port, Ref source, midikit::io::ConnectionToken token) override;
  OSStatus MIDIPortDisconnectSource(Ref port, Ref source) override;

  OSStatus MIDIDestinationCreateWithProtocol(Ref client, const std::string& name,
                                             midikit::io::MIDIProtocolID protocol, Ref& outEndpoint,
                                             midikit::io::MIDIReceiveBlock block) override;
  OSStatus MIDIDestinationCreateWithBlock(Ref client, const std::string& name, Ref& outEndpoint,
                                          midikit::io::MIDIReadBlock block) override;
  OSStatus MIDISourceCreateWithProtocol(Ref client, const std::string& name,
                                        midikit::io::MIDIProtocolID protocol, Ref& outEndpoint) override;
  OSStatus MIDISourceCreate(Ref client, const std::string& name, Ref& outEndpoint) override;
  OSStatus MIDIEndpointDispose(Ref endpoint) override;

  OSStatus MIDISend(Ref port, Ref destination, const midikit::io::MIDIPacketList& list) override;
  OSStatus MIDISendEventList(Ref port, Ref destination, const midikit::io::MIDIEventList& list) override;
  OSStatus MIDIReceived(Ref source, const midikit::io::MIDIPacketList& list) override;
  OSStatus MIDIReceivedEventList(Ref source, const midikit::io::MIDIEventList& list) override;

  void MIDIThruConnectionParamsInitialize(midikit::io::MIDIThruConnectionParams& out) const override;
  OSStatus MIDIThruConnectionCreate(const std::optional<std::string>& ownerID,
                                    std::span<const std::uint8_t> parameters, Ref& outConnection) override;
  OSStatus MIDIThruConnectionDispose(Ref connection) override;
  OSStatus MIDIThruConnectionFind(const std::string& ownerID,
                                  std::vector<std::uint8_t>& outReferences) const override;

 private:
  /// Counts the call and, unless it must fail, does it under the lock.
  template <typename Work>
  OSStatus perform(MidiOperation operation, Ref object, const Work& work) const {
    if (const auto failure = calls_.begin(operation, object)) {
      return *failure;
    }
    const std::lock_guard lock(mutex_);
    return work();
  }
  /// The same for operations that give a count or a reference: 0 when they must fail.
  template <typename Work>
  std::invoke_result_t<Work> look(MidiOperation operation, Ref object, const Work& work) const {
    if (calls_.begin(operation, object)) {
      return 0;
    }
    const std::lock_guard lock(mutex_);
    return work();
  }
  using Children = std::vector<Ref> MidiObject::*;
  std::size_t countChildren(MidiOperation operation, Ref parent, Children list) const;
  Ref child(MidiOperation operation, Ref parent, Children list, std::size_t index) const;

  struct VirtualEndpoint {
    MidiObjectKind kind;
    const std::string& name;
    midikit::io::MIDIProtocolID protocol;
  };
  bool hasProtocols() const { return version_ >= midikit::io::PlatformVersion{.major = 11, .minor = 0}; }
  OSStatus checkProtocol(midikit::io::MIDIProtocolID protocol) const;
  OSStatus checkEndpoint(Ref endpoint, MidiObjectKind kind) const;
  OSStatus checkSource(Ref source, bool wantsVirtual) const;
  OSStatus addPort(Ref client, std::optional<MidiReader> reader, Ref& out);
  OSStatus addVirtualEndpoint(Ref client, const VirtualEndpoint& description,
                              std::optional<MidiReader> reader, Ref& out);
  OSStatus send(Ref port, Ref destination, const SharedMidiList& list);
  OSStatus receive(Ref source, const SharedMidiList& list, bool isVirtual);
  /// Tells that a property was changed, if it was.
  OSStatus tellChange(OSStatus result, Ref object, std::string_view key);

  foundation::Runtime& runtime_;
  const midikit::io::PlatformVersion version_;
  mutable CallLedger calls_;
  mutable std::mutex mutex_;  ///< of all below; no block runs under it
  References references_;
  MidiSetup setup_;
  MidiClients clients_;
  MidiRouting routing_;
  ThruConnections thru_;
  foundation::SerialQueue equipmentQueue_;
};

}  // namespace karvex::rig
