#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "MIDIKitIO/platform/MIDIService.hpp"
#include "MIDIKitIO/platform/engine/BlockGate.hpp"
#include "MIDIKitIO/platform/engine/MIDIClients.hpp"
#include "MIDIKitIO/platform/engine/MIDIDriver.hpp"
#include "MIDIKitIO/platform/engine/MIDIDriverHost.hpp"
#include "MIDIKitIO/platform/engine/MIDIList.hpp"
#include "MIDIKitIO/platform/engine/MIDIRouting.hpp"
#include "MIDIKitIO/platform/engine/MIDISetup.hpp"
#include "MIDIKitIO/platform/engine/References.hpp"
#include "MIDIKitIO/platform/engine/SetupEditor.hpp"
#include "MIDIKitIO/platform/engine/ThruConnectionStore.hpp"
#include "MIDIKitIO/platform/engine/ThruConnections.hpp"
#include "foundation/run/Clock.hpp"
#include "foundation/run/Runtime.hpp"
#include "foundation/run/SerialQueue.hpp"
#include "foundation/run/Timer.hpp"

namespace midikit::io::engine {

/// A whole MIDI service in memory, which lacks nothing but equipment: that is its driver's business. All
/// operations may be called on any thread, the blocks that it runs included.
///
/// Blocks run on the runtime's threads: for each client, one at a time its notify block, and beside that one
/// at a time what its ports and virtual endpoints receive. On a virtual runtime the order of all of it is the
/// same every time. Each change of the setup is there before its messages are; all clients get the messages
/// of all changes in the order of the changes, the client that made the change too.
///
/// Lists go to their readers at once, whatever their time stamps say, and in the form that the reader wants
/// (ListConverter).
///
/// A connection ends late. From MIDIPortDisconnectSource on, the port's block gets nothing from the source,
/// but a block that is running at that moment runs on. What waits and what comes is kept for lingerTime: if
/// the port connects to the source again until then, the block gets it, with the new token, and a
/// half-received system exclusive message goes on. So anyone who follows a change of the setup by ending and
/// making its connections loses nothing.
class MIDIServiceEngine final : public MIDIService, private MIDIDriverHost {
 public:
  using Ref = MIDIObjectRef;
  using OSStatus = io::OSStatus;

  /// For so long a connection can be taken up again. Between ending and making it a program looks at the
  /// whole setup: some 10 ms for hundreds of objects, a multiple of that on a busy machine.
  static constexpr karvex::foundation::Duration lingerTime = std::chrono::milliseconds(500);

  /// The runtime must outlive the service. Before platform version 11.0 the operations on protocols and event
  /// lists give `unknownError`. Services that are made with the same store, one after the other or
  /// together, share their persistent thru connections. The driver is attached when this returns, and nothing
  /// else may use it as a driver.
  MIDIServiceEngine(karvex::foundation::Runtime& runtime, PlatformVersion version,
                    std::shared_ptr<ThruConnectionStore> store, std::shared_ptr<MIDIDriver> driver);
  /// Begins with close().
  ~MIDIServiceEngine() override;

  /// Detaches the driver. No block runs after this, unless it is a block that calls it; lists and
  /// notifications that wait are dropped. What comes after the first time does nothing.
  void close();

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

 private:
  // The driver's side, from MIDIDriverHost.
  void edit(const std::function<void(SetupEditor&)>& work) override;
  std::optional<std::string> text(Ref object, std::string_view key) const override;
  std::optional<std::int32_t> number(Ref object, std::string_view key) const override;
  OSStatus setProperty(Ref object, std::string_view key, PropertyValue value) override;
  OSStatus removeProperty(Ref object, std::string_view key) override;
  OSStatus answerWithNone(Ref object, std::string_view key) override;
  void notify(const MIDINotification& message) override;
  OSStatus sendFromEquipment(Ref source, const MIDIList& list, Handovers& handovers) override;
  OSStatus sendFromOutside(Ref destination, Ref sender, const MIDIList& list, Handovers& handovers) override;
  OSStatus readAsEquipment(Ref destination, karvex::foundation::SerialQueue& queue,
                           MIDIReader reader) override;
  OSStatus listenAsEquipment(Ref source, karvex::foundation::SerialQueue& queue, MIDIReader reader,
                             ListReceiver::Manner manner) override;
  std::set<Ref> wantedSources() const override;
  std::set<std::pair<Ref, Ref>> plainThruConnections() const override;

  /// Does the work under the lock, and returns what it returns.
  template <typename Work>
  auto locked(const Work& work) const {
    const std::lock_guard lock(mutex_);
    return work();
  }
  /// Does the work under the lock, and makes the handovers after it.
  template <typename Work>
  OSStatus delivering(const Work& work) {
    Handovers handovers;
    const OSStatus result = locked([&] { return work(handovers); });
    handovers.make(ListReceiver::Thread::queues);
    return result;
  }
  using Children = std::vector<Ref> MIDIObject::*;
  std::size_t countChildren(Ref parent, Children list) const;
  Ref child(Ref parent, Children list, std::size_t index) const;

  struct VirtualEndpoint {
    MIDIObjectKind kind;
    const std::string& name;
    MIDIProtocolID protocol;
  };
  bool hasProtocols() const { return version_ >= PlatformVersion{.major = 11, .minor = 0}; }
  OSStatus checkProtocol(MIDIProtocolID protocol) const;
  OSStatus checkEndpoint(Ref endpoint, MIDIObjectKind kind) const;
  OSStatus checkSource(Ref source, bool wantsOwn) const;
  MIDIRouting::Receiver makeReceiver(karvex::foundation::SerialQueue& queue, MIDIReader reader,
                                     ListReceiver::Manner manner = ListReceiver::Manner::mayWait);
  OSStatus addPort(Ref client, std::optional<MIDIReader> reader, Ref& out);
  OSStatus addVirtualEndpoint(Ref client, const VirtualEndpoint& description,
                              std::optional<MIDIReader> reader, Ref& out);
  /// Who reads what is sent from that port to that destination; null for nobody.
  OSStatus readerFor(Ref port, Ref destination, MIDIRouting::Receiver& out) const;
  template <typename List>
  void deliver(const MIDIRouting::Receiver& reader, Ref port, const List& list);
  OSStatus receive(Ref source, const SharedMIDIList& list, bool isOwn, Handovers& handovers);
  /// Reports that a property was changed, if it was.
  OSStatus tellChange(OSStatus result, Ref object, std::string_view key);
  /// The same, and reports it to the driver too if the object is one of this program's own endpoints. Not
  /// locked.
  OSStatus changeProperty(Ref object, std::string_view key, const std::function<OSStatus()>& change);
  OSStatus tellAdded(OSStatus result, Ref endpoint, MIDIObjectKind kind);
  OSStatus tellRoutes(OSStatus result);
  void thruConnectionsChanged();
  /// Has endConnections() called at that moment. Under the lock.
  void endConnectionsAt(karvex::foundation::TimePoint due);
  void endConnections();

  karvex::foundation::Runtime& runtime_;
  const PlatformVersion version_;
  const std::shared_ptr<MIDIDriver> driver_;
  const std::shared_ptr<ThruConnectionStore> store_;
  std::function<void()> stopObserving_;
  std::atomic<bool> isClosed_ = false;
  mutable std::mutex mutex_;  ///< of all below; no block runs under it
  References references_;
  MIDISetup setup_;
  MIDIClients clients_;
  MIDIRouting routing_;
  ThruConnections thru_;
  MIDIListMemory lists_;
  bool isEndDue_ = false;  ///< the timer runs
  karvex::foundation::SerialQueue timerQueue_;
  karvex::foundation::Timer timer_;
  std::shared_ptr<BlockGate> timerGate_;  ///< around what the timer does, which holds on to it
};

}  // namespace midikit::io::engine
