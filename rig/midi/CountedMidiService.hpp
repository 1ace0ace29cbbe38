#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "MIDIKitIO/platform/MIDIService.hpp"
#include "rig/midi/CallLedger.hpp"

namespace karvex::rig {

/// Passes the operations on to another MIDI service, counts them, and makes those fail that its ledger wants
/// to. A failing operation doesn't reach the other service.
class CountedMidiService : public midikit::io::MIDIService {
 public:
  using Ref = midikit::io::MIDIObjectRef;
  using OSStatus = midikit::io::OSStatus;
  using ConnectionToken = midikit::io::ConnectionToken;

  explicit CountedMidiService(std::shared_ptr<MIDIService> service) : service_(std::move(service)) {}

  /// The counters of calls, and the failures to come.
  CallLedger& calls() const { return calls_; }

  midikit::io::PlatformVersion platformVersion() const override { return service_->platformVersion(); }
  std::uint64_t machAbsoluteTime() const override { return service_->machAbsoluteTime(); }

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
  OSStatus MIDIPortConnectSource(Ref port, Ref source, ConnectionToken token) override;
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
  /// Begins the call and, unless it must fail, makes it. An operation without a status fails with 0.
  template <typename Call>
  auto pass(MIDIOperation operation, Ref object, const Call& call) const -> decltype(call()) {
    if (const auto failure = calls_.begin(operation, object)) {
      return std::is_same_v<decltype(call()), OSStatus> ? static_cast<decltype(call())>(*failure) : 0;
    }
    return call();
  }

  std::shared_ptr<MIDIService> service_;
  mutable CallLedger calls_;
};

}  // namespace karvex::rig
