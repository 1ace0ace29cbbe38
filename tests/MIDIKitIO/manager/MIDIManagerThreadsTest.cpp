#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "MIDIKitIO/manager/ObservableMIDIManager.hpp"
#include "foundation/run/SystemRuntime.hpp"
#include "rig/midi/VirtualMidiService.hpp"

namespace midikit::io {
namespace {

using karvex::foundation::SystemRuntime;
using karvex::rig::simpleDevice;
using karvex::rig::VirtualMidiService;

/// A manager on the machine's own threads, whose main queue runs on this one. A thread sanitizer run proves
/// that what several threads touch is guarded.
template <class Manager>
class Concurrency {
 public:
  /// Attaches and takes away devices, a thousand changes in all, while `readers` run again and again on
  /// threads of their own; then waits until the handler has been told of the last one.
  void run(const std::vector<std::function<void()>>& readers) {
    std::vector<std::thread> threads;
    for (const auto& reader : readers) {
      threads.emplace_back([this, &reader] {
        while (!isOver) {
          reader();
        }
      });
    }
    threads.emplace_back([this] {
      constexpr int changes = 1000;
      for (int change = 0; change < changes / 2; ++change) {
        const auto device = service->addDevice(simpleDevice("device " + std::to_string(change)));
        service->removeDevice(device);
      }
      service->addDevice(simpleDevice("last"));
      service->notify({.messageID = lastMessage});
    });
    runtime.runMain();
    isOver = true;
    for (auto& thread : threads) {
      thread.join();
    }
  }

  /// Ends the run at the last message.
  void handle(const MIDIIONotification& notification) {
    ++notifications;
    if (notification == MIDIIONotification::other(lastMessage)) {
      runtime.stopMain();
    }
  }

  static constexpr std::int32_t lastMessage = 1000;

  SystemRuntime runtime;
  std::shared_ptr<VirtualMidiService> service = std::make_shared<VirtualMidiService>(runtime);
  std::shared_ptr<Manager> manager = Manager::create(
      {.service = service, .runtime = runtime, .clientName = "client", .model = "m", .manufacturer = "f"});
  std::atomic<bool> isOver = false;
  int notifications = 0;  ///< main thread
};

TEST(MIDIManagerThreadsTest, ReadersSeeWholeListsWhileTheSetupChangesAThousandTimes) {
  Concurrency<ObservableMIDIManager> setup;
  auto& manager = *setup.manager;
  manager.setNotificationHandler([&](const MIDIIONotification& notification, ObservableMIDIManager& its) {
    static_cast<void>(its.observableDevices.get());
    setup.handle(notification);
  });
  std::atomic<int> announced = 0;
  const auto subscription = manager.observableDevices.observe([&](const MIDIDevices& now) {
    EXPECT_LE(now.devices.size(), 1U);
    ++announced;
  });
  manager.start();
  setup.run({
      [&] { EXPECT_LE(manager.devices().devices.size(), 1U); },
      [&] {
        const auto endpoints = manager.endpoints();
        EXPECT_EQ(endpoints.inputs.size(), endpoints.inputsUnowned.size());
        EXPECT_EQ(endpoints.manager.lock(), setup.manager);
      },
      [&] {
        static_cast<void>(manager.observableEndpoints.get());
        static_cast<void>(manager.notificationCache());
        manager.setPreferredAPI(CoreMIDIAPIVersion::legacyCoreMIDI());
        manager.start();
        manager.refreshObjects();
      },
  });
  EXPECT_EQ(manager.devices().devices.at(0).name, "last");
  EXPECT_EQ(manager.observableDevices.get().devices.at(0).name, "last");
  EXPECT_EQ(manager.endpoints().outputs.size(), 1U);
  EXPECT_GE(announced, setup.notifications);
}

TEST(MIDIManagerThreadsTest, ObjectsComeAndGoWhileOthersFollowSendAndReceive) {
  Concurrency<MIDIManager> setup;
  auto& manager = *setup.manager;
  manager.setNotificationHandler(
      [&](const MIDIIONotification& notification, MIDIManager&) { setup.handle(notification); });
  int received = 0;  // Guarded by eventQueue alone.
  const auto receiver = MIDIReceiver::rawData([&](const AnyMIDIPacket&) { ++received; });
  const auto clock = core::MIDIEvent::timingClock();
  const auto exchangeObjects = [&](const std::string& tag) {
    manager.addOutput({.name = tag, .tag = tag});
    manager.addInputConnection(
        {.mode = MIDIInputConnectionMode::allOutputs(), .tag = tag, .receiver = receiver});
    manager.addOutputConnection({.mode = MIDIOutputConnectionMode::allInputs(), .tag = tag});
    manager.managedOutputConnections().at(tag)->sendEvent(clock);
    manager.managedOutputs().at(tag)->sendEvent(clock);
    const auto connection = manager.managedInputConnections().at(tag);
    manager.remove(ManagedType::inputConnection, TagSelection::withTag(tag));
    connection->addOutputs({MIDIEndpointIdentity::name(tag)});
  };
  manager.start();
  manager.addInput({.name = "in", .tag = "in", .receiver = receiver});
  setup.run({
      [&] { exchangeObjects("a"); },
      [&] { exchangeObjects("b"); },
      [&] { EXPECT_THAT(manager.endpoints().outputsUnowned.size(), testing::Le(1U)); },
      [&] {
        for (const auto& [tag, output] : manager.managedOutputs()) {
          static_cast<void>(output->description());
        }
      },
  });
  manager.removeAll();
  EXPECT_EQ(setup.service->MIDIGetNumberOfDestinations(), 1U) << "the last device";
  setup.manager.reset();
  setup.service.reset();  // After this, no block follows a change any more.
}

/// What the source sends as its message of that number: its number is in it, and each fiftieth is a system
/// exclusive one.
std::vector<std::uint8_t> messageAt(std::uint8_t source, int number) {
  const auto low = static_cast<std::uint8_t>(number & 0x7F);
  const auto high = static_cast<std::uint8_t>(number >> 7 & 0x7F);
  if (number % 50 != 49) {
    return {static_cast<std::uint8_t>(0x90 | source), low, high};
  }
  std::vector<std::uint8_t> message(100, low);
  message.front() = 0xF0;
  message[1] = source;
  message[2] = high;
  message.back() = 0xF7;
  return message;
}

TEST(MIDIManagerThreadsTest, AThousandSetupChangesLoseAndDoubleNothingOfUntouchedSources) {
  constexpr int changes = 1000;
  constexpr int messages = 50'000;  // of each source
  constexpr int kept = 1000;        // of them while a connection is held
  SystemRuntime runtime;
  const auto service = std::make_shared<VirtualMidiService>(runtime);
  const auto manager = MIDIManager::create(
      {.service = service, .runtime = runtime, .clientName = "client", .model = "m", .manufacturer = "f"});
  std::array<std::atomic<int>, 2> sent{};
  std::array<std::atomic<int>, 2> received{};
  std::atomic<int> wrong = 0;
  for (const auto* name : {"one", "two"}) {
    service->addDevice(simpleDevice(name));
  }
  manager->setPreferredAPI(CoreMIDIAPIVersion::legacyCoreMIDI());
  manager->start();
  manager->addInputConnection(
      {.mode = MIDIInputConnectionMode::allOutputs(),
       .tag = "all",
       .receiver = MIDIReceiver::rawData([&](const AnyMIDIPacket& packet) {
         const std::vector<std::uint8_t> bytes(packet.bytes().begin(), packet.bytes().end());
         const auto source = static_cast<std::uint8_t>(bytes.front() == 0xF0 ? bytes[1] : bytes[0] & 0xF);
         wrong += bytes == messageAt(source, received.at(source)++) ? 0 : 1;
       })});
  const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(2);
  std::vector<std::thread> threads;
  for (std::uint8_t source = 0; source < 2; ++source) {
    threads.emplace_back([&, source, from = service->MIDIGetSource(source)] {
      for (int number = 0; number < messages; sent.at(source) = ++number) {
        while (number > received.at(source) + kept) {
          ASSERT_LT(std::chrono::steady_clock::now(), end) << "lost";
          std::this_thread::yield();
        }
        const auto message = messageAt(source, number);
        for (std::span<const std::uint8_t> rest = message; !rest.empty();) {
          const auto piece = rest.first(std::min<std::size_t>(rest.size(), 40));
          MIDIPacketList list(100);
          EXPECT_TRUE(list.add(0, piece));
          EXPECT_EQ(service->sendFromEquipment(from, list), noErr);
          rest = rest.subspan(piece.size());
        }
      }
    });
  }
  service->calls().resetCounts();
  for (int change = 0; change < changes; change += 2) {
    service->removeDevice(service->addDevice(simpleDevice("device " + std::to_string(change))));
    while (sent[0] < messages / changes * change && std::chrono::steady_clock::now() < end) {
      std::this_thread::yield();
    }
  }
  for (auto& thread : threads) {
    thread.join();
  }
  while (received[0] + received[1] < 2 * messages && std::chrono::steady_clock::now() < end) {
    std::this_thread::yield();
  }
  manager->removeAll();
  EXPECT_GE(service->calls().count(karvex::rig::MIDIOperation::portDisconnectSource), 2U * changes);
  EXPECT_EQ(received[0], messages);
  EXPECT_EQ(received[1], messages);
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace midikit::io
