#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "MIDIKitIO/manager/MIDIManager.hpp"
#include "MIDIKitIO/objects/SystemObjects.hpp"
#include "tests/MIDIKitIO/MIDITestFixture.hpp"

namespace midikit::io {

/// A started manager, and equipment by name and unique ID.
class ManagerFixture : public MIDITestFixture {
 protected:
  ManagerFixture() { startOn({13, 0}); }

  /// Another service and manager, on a platform of that version.
  void startOn(PlatformVersion version) {
    manager.reset();
    service = serviceOf(version);
    manager = MIDIManager::create(
        {.service = service, .runtime = runtime, .clientName = "client", .model = "m", .manufacturer = "f"});
    manager->start();
  }

  /// A device with one source, whose reference is returned; the manager has heard of it.
  MIDIObjectRef addSource(const std::string& name, std::int32_t uniqueID) {
    service->addDevice(
        {.name = name, .entities = {{.sources = {{.name = name, .properties = {{"uniqueID", uniqueID}}}}}}});
    settle();
    return *findSource(*service, uniqueID);
  }
  /// The same with a destination.
  MIDIObjectRef addDestination(const std::string& name, std::int32_t uniqueID) {
    service->addDevice(
        {.name = name,
         .entities = {{.destinations = {{.name = name, .properties = {{"uniqueID", uniqueID}}}}}}});
    settle();
    return *findDestination(*service, uniqueID);
  }
  /// Takes the device of the endpoint away.
  void removeDeviceOf(MIDIObjectRef endpoint) {
    service->removeDevice(makeOutputEndpoint(*service, endpoint).device(*service)->coreMIDIObjectRef);
    settle();
  }

  /// A receiver that writes down its packets' bytes and the names of their sources.
  MIDIReceiver writer() {
    return MIDIReceiver::rawData([this](const AnyMIDIPacket& packet) {
      std::string line;
      if (packet.source()) {
        line.append(packet.source()->name).append(":");
      }
      for (const auto byte : packet.bytes()) {
        line.append(" ").append(std::to_string(byte));
      }
      received_.push_back(line);
    });
  }
  /// What was received since the last time.
  std::vector<std::string> received() {
    settle();
    return std::exchange(received_, {});
  }
  /// The source sends a note-off of this number.
  void play(MIDIObjectRef source, std::uint8_t note) {
    MIDIPacketList list(100);
    ASSERT_TRUE(list.add(0, std::vector<std::uint8_t>{0x80, note, 0}));
    ASSERT_EQ(service->sendFromEquipment(source, list), noErr);
  }

  std::shared_ptr<MIDIManager> manager;

 private:
  std::vector<std::string> received_;
};

inline MIDIEndpointIdentity uniqueID(std::int32_t number) {
  return MIDIEndpointIdentity::uniqueID(number);
}

}  // namespace midikit::io
