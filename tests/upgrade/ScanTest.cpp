// What the device table lists: the service's list, the USB bus and the MIDI layer put together.

#include <gmock/gmock.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "MIDIKitIO/platform/engine/MIDINotifications.hpp"
#include "foundation/NotificationCenter.hpp"
#include "loader/load_status.hpp"
#include "rig/midi/MIDIOperation.hpp"
#include "tests/upgrade/UpgradeFixture.hpp"

namespace karvex::upgrade {
namespace {

using namespace std::chrono_literals;
using midikit::io::MIDIObjectRef;
using midikit::io::PropertyDictionary;
using records::BootableDevice;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// The platform's answer for an object that it doesn't know.
constexpr midikit::io::OSStatus unknownObject = -10842;

class ScanTest : public testing::Test {
 protected:
  void plugIn(const std::string& serialNumber) {
    fixture.rig.bus.plugIn(
        std::make_unique<rig::VirtualBoard>(*rig::findBoardKind("TEENSY40"), serialNumber));
  }

  void enterBootloader(const std::string& serialNumber) {
    ASSERT_TRUE(fixture.rig.bus.setLineSpeed(serialNumber, 134));
    fixture.runFor(3s);
  }

  MIDIObjectRef addMIDIDevice(const std::string& name, const PropertyDictionary& properties) {
    auto description = rig::simpleDevice(name);
    description.properties.insert(properties.begin(), properties.end());
    return fixture.rig.midiService->addDevice(description);
  }

  UpgradeFixture fixture{0};
};

records::ServerDeviceDescriptor listed(const std::string& serialNumber, std::int64_t sequenceNumber = 1) {
  records::ServerDeviceDescriptor descriptor;
  descriptor.deviceSerialNumber = serialNumber;
  descriptor.sequenceNumber = sequenceNumber;
  descriptor.setupDelay = 7;
  descriptor.serverURL = "https://a";
  descriptor.serverDirectory = "/b/";
  descriptor.serverFile = "c.hex";
  descriptor.firmwareName = "Pedal";
  descriptor.firmwareVersion = "2.0";
  descriptor.currentVersion = "1.0";
  descriptor.mcu = "TEENSY40";
  return descriptor;
}

std::vector<std::string> serialsOf(const BootableDeviceManager& manager) {
  std::vector<std::string> serials;
  for (const auto& device : manager.managedDevices.get()) {
    serials.push_back(device.portSerialNumber);
  }
  return serials;
}

TEST_F(ScanTest, TheRowsFollowTheServiceAndAreNewAtEachScan) {
  for (const auto* serial : {"10", "20", "30"}) {
    plugIn(serial);
  }
  const auto midi = fixture.startedManager();
  BootableDeviceManager manager(fixture.platform());
  manager.isServerLoaded = true;
  manager.deviceDescriptors = {listed("30", 9), listed("40", 1), listed("10", 5), listed("30", 2)};
  manager.deviceDescriptors[2].isValid = false;
  ASSERT_TRUE(manager.scanDevices(*midi));
  EXPECT_EQ(manager.errorCode.get(), scanComplete);
  EXPECT_THAT(serialsOf(manager), ElementsAre("30", "10", "30"));
  const auto first = manager.managedDevices.get();
  EXPECT_NE(first[0].id, first[2].id);
  const BootableDevice expected{.id = first[1].id,
                                .deviceName = "TEENSY40 MIDI",
                                .portSerialNumber = "10",
                                .firmwareServerURL = "https://a",
                                .firmwareDir = "/b/",
                                .firmwareFile = "c.hex",
                                .firmwareName = "Pedal",
                                .firmwareVersion = "2.0",
                                .currentVersion = "1.0",
                                .mcu = "TEENSY40",
                                .sequenceNumber = 5,
                                .setupDelay = 7,
                                .USBVendorId = 5824,
                                .USBProductId = 0x0489,
                                .USBBCDDevice = 0x0279};
  EXPECT_EQ(first[1], expected);

  manager.updateStatus(first[0].id, 7);
  fixture.rig.bus.unplug("10");
  ASSERT_TRUE(manager.scanDevices(*midi));
  EXPECT_THAT(serialsOf(manager), ElementsAre("30", "30"));
  EXPECT_NE(manager.managedDevices.get()[0].id, first[0].id);
  EXPECT_EQ(manager.managedDevices.get()[0].status, 0U);
}

TEST_F(ScanTest, TheMIDILayerNamesADeviceByItsSerialNumberAlone) {
  struct MIDIDevice {
    const char* name;
    PropertyDictionary properties;
    bool isUnreadable = false;
  };
  struct Case {
    const char* what;
    std::vector<MIDIDevice> devices;
    std::optional<std::size_t> match;  ///< place among the devices
    std::optional<bool> offline;
  };
  const Case cases[] = {
      {"no MIDI device", {}, std::nullopt, false},
      {"another's", {{"A", {{"SerialNumber", "100"}, {"offline", 1}}}}, std::nullopt, false},
      {"a number as serial number", {{"A", {{"SerialNumber", 10}, {"offline", 1}}}}, std::nullopt, false},
      {"offline", {{"A", {{"SerialNumber", "10"}, {"offline", 1}}}}, 0, true},
      {"online", {{"A", {{"SerialNumber", "10"}, {"offline", 0}}}}, 0, false},
      {"doesn't say", {{"A", {{"SerialNumber", "10"}}}}, 0, std::nullopt},
      {"a text as offline", {{"A", {{"SerialNumber", "10"}, {"offline", "1"}}}}, 0, std::nullopt},
      {"no truth as offline", {{"A", {{"SerialNumber", "10"}, {"offline", 2}}}}, 0, std::nullopt},
      {"the last of two counts",
       {{"A", {{"SerialNumber", "10"}, {"offline", 1}}}, {"B", {{"SerialNumber", "10"}}}},
       1,
       std::nullopt},
      {"the last one can't be read",
       {{"A", {{"SerialNumber", "10"}, {"offline", 1}}}, {"B", {{"SerialNumber", "10"}}, true}},
       0,
       true},
      {"the first one can't be read",
       {{"A", {{"SerialNumber", "10"}}, true}, {"B", {{"SerialNumber", "10"}, {"offline", 1}}}},
       1,
       true},
  };
  plugIn("10");
  BootableDeviceManager manager(fixture.platform());
  manager.isServerLoaded = true;
  manager.deviceDescriptors = {listed("10")};
  for (const auto& example : cases) {
    SCOPED_TRACE(example.what);
    std::vector<MIDIObjectRef> refs;
    for (const auto& device : example.devices) {
      refs.push_back(addMIDIDevice(device.name, device.properties));
    }
    const auto midi = fixture.startedManager();
    for (std::size_t i = 0; i < refs.size(); ++i) {
      if (example.devices[i].isUnreadable) {
        fixture.rig.midiService->calls().failNext(rig::MIDIOperation::objectGetProperties, unknownObject, 1,
                                                  refs[i]);
      }
    }
    ASSERT_TRUE(manager.scanDevices(*midi));
    const auto row = manager.managedDevices.get().at(0);
    EXPECT_EQ(row.midiRef, example.match ? std::optional(refs[*example.match]) : std::nullopt);
    EXPECT_EQ(row.deviceName, example.match ? example.devices[*example.match].name : "TEENSY40 MIDI");
    EXPECT_EQ(row.isOffline, example.offline);
    for (const auto ref : refs) {
      fixture.rig.midiService->removeDevice(ref);
    }
  }
}

TEST_F(ScanTest, WhatAScanFindsWrong) {
  plugIn("10");
  plugIn("20");
  const auto midi = fixture.startedManager();
  BootableDeviceManager manager(fixture.platform());
  manager.deviceDescriptors = {listed("10"), listed("20")};
  manager.managedDevices.set({BootableDevice()});
  EXPECT_FALSE(manager.scanDevices(*midi));
  EXPECT_EQ(manager.errorCode.get(), serviceNotAsked);
  EXPECT_THAT(manager.managedDevices.get(), IsEmpty());
  EXPECT_THAT(manager.deviceExplorer.devices.get(), SizeIs(2)) << "the bus is scanned all the same";

  manager.isServerLoaded = true;
  enterBootloader("20");
  EXPECT_FALSE(manager.scanDevices(*midi));
  EXPECT_EQ(manager.errorCode.get(), halfkayDevicePresent);
  EXPECT_THAT(serialsOf(manager), ElementsAre("10", "20"));
  EXPECT_EQ(manager.managedDevices.get()[1].USBProductId, 0x0478);

  manager.deviceDescriptors.clear();
  EXPECT_FALSE(manager.scanDevices(*midi)) << "a board of nobody's is told of, too";
  EXPECT_EQ(manager.errorCode.get(), halfkayDevicePresent);

  fixture.rig.bus.repair("20");
  fixture.rig.bus.unplug("20");
  EXPECT_TRUE(manager.scanDevices(*midi));
  EXPECT_EQ(manager.errorCode.get(), scanComplete);
}

/// The table with a service that lists the boards 10 and 20, of which 10 is attached.
class ListedTest : public ScanTest {
 protected:
  ListedTest() {
    fixture.rig.service.setDevices(
        std::vector<rig::ServedDevice>{{.deviceSerialNumber = "10"}, {.deviceSerialNumber = "20"}});
    plugIn("10");
    midiDevice = addMIDIDevice("Pedal", {{"SerialNumber", "10"}, {"offline", 0}});
    fixture.makeView();
  }

  MIDIObjectRef midiDevice = 0;
};

TEST_F(ListedTest, AChangeOfTheMIDISetupRereadsTheMarkAndNothingElse) {
  fixture.appear();
  ASSERT_THAT(fixture.rows(), SizeIs(1));
  fixture.view->deviceManager.updateStatus(fixture.rows()[0].id, 6);
  auto expected = fixture.rows();
  const auto expectMark = [&](std::optional<bool> offline, const char* what) {
    fixture.runFor(1s);
    expected[0].isOffline = offline;
    EXPECT_EQ(fixture.rows(), expected) << what;
  };
  fixture.rig.midiService->setProperty(midiDevice, "name", std::string("Another name"));
  fixture.rig.midiService->setProperty(midiDevice, "offline", 1);
  fixture.rig.midiService->notify(midikit::io::engine::thruConnectionChangedMessage());
  expectMark(false, "changes of properties and of connections are not looked at");
  fixture.rig.midiService->notify(midikit::io::engine::setupChangedMessage());
  expectMark(true, "offline");
  fixture.rig.midiService->removeProperty(midiDevice, "offline");
  fixture.rig.midiService->notify(midikit::io::engine::setupChangedMessage());
  expectMark(std::nullopt, "the device doesn't say any more");
  fixture.rig.midiService->setProperty(midiDevice, "offline", 0);
  fixture.rig.midiService->notify(midikit::io::engine::setupChangedMessage());
  expectMark(false, "online");
  fixture.rig.midiService->setProperty(midiDevice, "offline", 1);
  fixture.rig.midiService->removeDevice(midiDevice);
  expectMark(false, "an object that has gone keeps the mark as it was");
  EXPECT_THAT(fixture.rig.service.requests(), SizeIs(1));
}

TEST_F(ListedTest, AChangeWithAnEmptyListScansWithoutAskingTheService) {
  fixture.rig.bus.unplug("10");
  fixture.appear();
  ASSERT_THAT(fixture.rows(), IsEmpty());
  plugIn("20");
  fixture.runFor(1s);
  EXPECT_THAT(fixture.rows(), IsEmpty());
  fixture.rig.midiService->notify(midikit::io::engine::setupChangedMessage());
  fixture.runFor(1s);
  EXPECT_THAT(serialsOf(fixture.view->deviceManager), ElementsAre("20"));
  EXPECT_THAT(fixture.rig.service.requests(), SizeIs(1));
  const auto followed = fixture.view->midiManager;
  fixture.view.reset();
  EXPECT_FALSE(followed->notificationHandler()) << "nothing of the view stays in the manager";
}

TEST_F(ListedTest, AChangeBeforeTheListHasComeIsNotLookedAt) {
  fixture.misbehave("slow=5000");
  fixture.runtime.mainQueue().post([this] { fixture.view->appear(); });
  fixture.runFor(1s);
  fixture.rig.midiService->notify(midikit::io::engine::setupChangedMessage());
  fixture.runFor(1s);
  EXPECT_EQ(fixture.view->deviceManager.errorCode.get(), scanComplete)
      << "a scan would find the service not asked";
  EXPECT_THAT(fixture.rows(), IsEmpty());
  fixture.runFor(4s);
  EXPECT_THAT(fixture.rows(), SizeIs(1));
}

TEST_F(ListedTest, WithABoardInItsBootloaderTheChangesAreNotFollowed) {
  for (const bool isDenied : {false, true}) {
    SCOPED_TRACE(isDenied);
    fixture.makeView();
    if (!isDenied) {
      enterBootloader("10");
    }
    loader::set_load_status(isDenied ? loader::LOAD_STATUS_ERROR_PERMISSION : loader::LOAD_STATUS_IDLE);
    fixture.appear();
    ASSERT_THAT(fixture.rows(), SizeIs(1));
    EXPECT_EQ(fixture.view->isUp(Alert::halfkayModeDetected), !isDenied);
    fixture.rig.midiService->setProperty(midiDevice, "offline", isDenied ? 0 : 1);
    const auto mark = fixture.rows()[0].isOffline;
    fixture.rig.midiService->notify(midikit::io::engine::setupChangedMessage());
    fixture.runFor(1s);
    EXPECT_EQ(fixture.rows()[0].isOffline, mark);
  }
  fixture.runtime.mainQueue().post(
      [] { foundation::NotificationCenter::defaultCenter().post(scanDevicesNotification); });
  fixture.runFor(1s);
  EXPECT_TRUE(fixture.view->isUp(Alert::halfkayModeDetected))
      << "a refresh tells of it whatever the load status is";
}

}  // namespace
}  // namespace karvex::upgrade
