#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"
#include "foundation/run/SystemRuntime.hpp"
#include "rig/midi/VirtualMidiService.hpp"

namespace midikit::io::engine {
namespace {

/// Reads all there is, as a program that lists the setup does.
void walk(const karvex::rig::VirtualMidiService& service) {
  for (std::size_t i = 0; i < service.MIDIGetNumberOfDevices(); ++i) {
    const auto device = service.MIDIGetDevice(i);
    std::optional<std::string> name;
    static_cast<void>(service.MIDIObjectGetStringProperty(device, kMIDIPropertyName, name));
    PropertyDictionary all;
    static_cast<void>(service.MIDIObjectGetProperties(device, all, true));
    static_cast<void>(service.MIDIEntityGetSource(service.MIDIDeviceGetEntity(device, 0), 0));
  }
}

TEST(MIDIServiceThreadsTest, PortsComeAndGoWhileTheirListsArrive) {
  karvex::foundation::SystemRuntime runtime;
  karvex::rig::VirtualMidiService service(runtime);
  service.addDevice(simpleDevice("Desk"));
  const auto source = service.MIDIGetSource(0);
  MIDIObjectRef client = 0;
  ASSERT_EQ(service.MIDIClientCreateWithBlock("c", client, nullptr), noErr);
  std::atomic<bool> isDone = false;
  std::thread sender([&] {
    MIDIPacketList list(100);
    const std::array<std::uint8_t, 3> note = {0x90, 0x3C, 0x40};
    EXPECT_TRUE(list.add(0, note));
    while (!isDone) {
      EXPECT_EQ(service.sendFromEquipment(source, list), noErr);
      std::this_thread::yield();
    }
  });
  for (int i = 0; i < 300; ++i) {
    // Guarded by nothing but the promise that no block runs behind the end of its port.
    auto alive = std::make_unique<std::atomic<int>>(0);
    MIDIObjectRef port = 0;
    ASSERT_EQ(service.MIDIInputPortCreateWithProtocol(client, "p", MIDIProtocolID::midi2_0, port,
                                                      [&alive](const MIDIEventList&, ConnectionToken token) {
                                                        EXPECT_EQ(token, &alive);
                                                        ++*alive;
                                                        alive->notify_one();
                                                      }),
              noErr);
    ASSERT_EQ(service.MIDIPortConnectSource(port, source, &alive), noErr);
    if (i % 3 > 0) {
      alive->wait(0);
    }
    if (i % 2 == 0) {
      static_cast<void>(service.MIDIPortDisconnectSource(port, source));
    }
    EXPECT_EQ(service.MIDIPortDispose(port), noErr);
    alive.reset();
  }
  isDone = true;
  sender.join();
}

TEST(MIDIServiceThreadsTest, TheServiceEndsWhileItsBlocksRun) {
  karvex::foundation::SystemRuntime runtime;
  for (int i = 0; i < 100; ++i) {
    std::atomic<int> heard = 0;
    karvex::rig::VirtualMidiService service(runtime);
    MIDIObjectRef client = 0;
    ASSERT_EQ(service.MIDIClientCreateWithBlock("c", client,
                                                [&](const MIDINotification&) {
                                                  walk(service);
                                                  MIDIObjectRef made = 0;
                                                  static_cast<void>(service.MIDIClientCreateWithBlock(
                                                      "d", made, [&](const MIDINotification&) { ++heard; }));
                                                }),
              noErr);
    for (int device = 0; device < 5; ++device) {
      service.addDevice(simpleDevice("Desk"));
    }
  }
}

}  // namespace
}  // namespace midikit::io::engine
