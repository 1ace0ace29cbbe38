#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "MIDIKitIO/manager/ObservableMIDIManager.hpp"
#include "MIDIKitIO/objects/SystemObjects.hpp"
#include "foundation/SystemRuntime.hpp"
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
  /// Changes the setup a thousand times, by two at a time, while `readers` run again and again on threads of
  /// their own; then waits until the last change has been handled. Without `changeTwice`, devices come and
  /// go.
  void run(const std::vector<std::function<void()>>& readers,
           const std::function<void(int change)>& changeTwice = nullptr) {
    std::vector<std::thread> threads;
    for (const auto& reader : readers) {
      threads.emplace_back([this, &reader] {
        while (!isOver) {
          reader();
        }
      });
    }
    threads.emplace_back([this, &changeTwice] {
      for (int change = 0; change < changes; change += 2) {
        if (changeTwice) {
          changeTwice(change);
        } else {
          exchangeDevice();
        }
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

  void exchangeDevice() { service->removeDevice(service->addDevice(simpleDevice("device"))); }

  /// Ends the run at the last message.
  void handle(const MIDIIONotification& notification) {
    ++notifications;
    if (notification == MIDIIONotification::other(lastMessage)) {
      runtime.stopMain();
    }
  }

  static constexpr int changes = 1000;
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

/// A source of a device, whose messages can be distinguished: notes with their number in the data, and system
/// exclusive messages that are sent in pieces.
class NumberedTraffic {
 public:
  NumberedTraffic(VirtualMidiService& service, std::int32_t uniqueID, bool hasSysEx)
      : service_(service), hasSysEx_(hasSysEx) {
    service.addDevice(
        {.name = "d", .entities = {{.sources = {{.name = "s", .properties = {{"uniqueID", uniqueID}}}}}}});
    source_ = findSource(service, uniqueID).value();
  }

  std::vector<std::uint8_t> message(int number) const {
    const auto digit = [number](int place) {
      return static_cast<std::uint8_t>((number >> (7 * place)) & 0x7F);
    };
    if (!hasSysEx_ || number % 100 != 0) {
      return {static_cast<std::uint8_t>(0x80 | digit(2)), digit(1), digit(0)};
    }
    std::vector<std::uint8_t> sysEx(150, digit(0));
    std::ranges::copy(std::array<std::uint8_t, 4>{0xF0, 0x7D, digit(2), digit(1)}, sysEx.begin());
    sysEx.back() = 0xF7;
    return sysEx;
  }
  void sendNext() {
    const auto bytes = message(sent);
    for (std::size_t at = 0; at < bytes.size(); at += 40) {
      MIDIPacketList list(100);
      EXPECT_TRUE(list.add(0, std::span(bytes).subspan(at, std::min<std::size_t>(40, bytes.size() - at))));
      EXPECT_EQ(service_.sendFromEquipment(source_, list), noErr);
    }
    ++sent;
  }

  std::atomic<int> sent = 0;

 private:
  VirtualMidiService& service_;
  const bool hasSysEx_;
  MIDIObjectRef source_ = 0;
};

/// What of one source's traffic reaches one connection.
struct HeardTraffic {
  void hear(const NumberedTraffic& traffic, const core::MIDIEvent& event) {
    isWhole = isWhole && event.midi1Bytes() == traffic.message(count);
    ++count;
  }
  std::atomic<int> count = 0;
  std::atomic<bool> isWhole = true;
};

TEST(MIDIManagerThreadsTest, WhatUntouchedSourcesSendIsHeardOnceWhileTheSetupChangesAThousandTimes) {
  constexpr int messages = 50500;  // of each of two sources
  Concurrency<MIDIManager> setup;
  auto& manager = *setup.manager;
  manager.setNotificationHandler(
      [&](const MIDIIONotification& notification, MIDIManager&) { setup.handle(notification); });
  manager.start();
  NumberedTraffic traffic[] = {{*setup.service, 1, false}, {*setup.service, 2, true}};
  HeardTraffic heard[2][2];  // by connection and source
  const auto receiver = [&](auto& heardHere) {
    return MIDIReceiver::events(
        {}, [&](std::span<const core::MIDIEvent> events, std::uint64_t, const MIDIPacketSource& source) {
          const auto index = static_cast<std::size_t>(source->uniqueID - 1);
          for (const auto& event : events) {
            heardHere[index].hear(traffic[index], event);
          }
        });
  };
  manager.refreshObjects();
  manager.addInputConnection({.mode = MIDIInputConnectionMode::outputs(
                                  {MIDIEndpointIdentity::uniqueID(1), MIDIEndpointIdentity::uniqueID(2)}),
                              .tag = "these",
                              .receiver = receiver(heard[0])});
  manager.setPreferredAPI(CoreMIDIAPIVersion::legacyCoreMIDI());
  manager.addInputConnection(
      {.mode = MIDIInputConnectionMode::allOutputs(), .tag = "all", .receiver = receiver(heard[1])});

  const auto deadline = setup.runtime.clock().now() + std::chrono::seconds(30);
  const auto waitUntil = [&](const auto& condition) {
    while (!condition() && setup.runtime.clock().now() < deadline) {
      std::this_thread::yield();
    }
  };
  const auto sender = [&](std::size_t index) {
    return [&, index] {
      if (traffic[index].sent < messages) {
        waitUntil([&] {
          return std::ranges::all_of(
              heard, [&](auto& here) { return traffic[index].sent < here[index].count + 1000; });
        });
        traffic[index].sendNext();
      }
    };
  };
  setup.run({sender(0), sender(1)}, [&](int change) {
    waitUntil([&] { return traffic[0].sent >= change * (messages / setup.changes); });
    if (change % 4 == 0) {
      setup.exchangeDevice();
    } else {
      manager.addOutput({.name = "o", .tag = "o"});
      manager.remove(ManagedType::output, TagSelection::withTag("o"));
    }
  });
  for (const std::size_t index : {0U, 1U}) {
    while (traffic[index].sent < messages) {
      sender(index)();
    }
    for (auto& here : heard) {
      waitUntil([&] { return here[index].count >= messages; });
      EXPECT_EQ(here[index].count, messages);
      EXPECT_TRUE(here[index].isWhole);
    }
  }
  setup.manager.reset();
}

}  // namespace
}  // namespace midikit::io
