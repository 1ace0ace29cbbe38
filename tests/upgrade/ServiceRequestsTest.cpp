// What the service is asked and told, and what becomes of its answers.

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <sstream>

#include "foundation/run/Timer.hpp"
#include "tests/ExpectedText.hpp"
#include "tests/upgrade/UpgradeFixture.hpp"

namespace karvex::upgrade {
namespace {

using namespace std::chrono_literals;
using foundation::Task;
using records::BootableDevice;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class ServiceRequestsTest : public testing::Test {
 protected:
  ServiceRequestsTest() {
    fixture.rig.service.setDevices(std::vector<rig::ServedDevice>{
        {.deviceSerialNumber = "10"}, {.deviceSerialNumber = "20", .mcu = "TEENSY40", .setupDelay = 7}});
  }

  static BootableDevice device(const std::string& serialNumber) {
    BootableDevice device;
    device.portSerialNumber = serialNumber;
    device.firmwareName = "Pedal & Co";
    device.firmwareVersion = "2.0+1";
    device.currentVersion = "1.0";
    return device;
  }

  /// Runs a request to its end.
  bool resultOf(Task<bool> request) {
    bool result = false;
    const auto run = [](Task<bool> awaited, bool& into) -> Task<> { into = co_await std::move(awaited); };
    fixture.run(run(std::move(request), result));
    return result;
  }
  bool fetch() { return resultOf(manager.fetchDeviceDescriptors()); }
  void complete(std::size_t place) {
    fixture.run(manager.sendUploadComplete(manager.managedDevices.get().at(place).id));
  }

  UpgradeFixture fixture{0};
  BootableDeviceManager manager{fixture.platform()};
  device::DeviceExplorer explorer{fixture.platform().forExplorer()};
};

TEST_F(ServiceRequestsTest, TheListIsAskedForWithAnEmptyFormAndDecoded) {
  EXPECT_TRUE(fetch());
  EXPECT_TRUE(manager.isServerLoaded);
  ASSERT_THAT(manager.deviceDescriptors, SizeIs(2));
  EXPECT_EQ(manager.deviceDescriptors[1].deviceSerialNumber, "20");
  EXPECT_EQ(manager.deviceDescriptors[1].setupDelay, 7U);
  const auto requests = fixture.rig.service.requests();
  ASSERT_THAT(requests, SizeIs(1));
  EXPECT_EQ(requests[0].method, "POST");
  EXPECT_EQ(requests[0].path, "/services/loaderInfo.php");
  EXPECT_EQ(requests[0].body, "");
}

TEST_F(ServiceRequestsTest, ACompletionIsShownAtOnceAndToldInTheOrderGiven) {
  manager.managedDevices.set({device("10"), device("20")});
  std::vector<std::string> versions;
  const auto subscription = manager.managedDevices.observe([&](const std::vector<BootableDevice>& devices) {
    versions.push_back(devices[0].currentVersion + " " + devices[1].currentVersion);
    EXPECT_THAT(fixture.rig.service.requests(), IsEmpty()) << "the table shows it before anything is sent";
  });
  complete(1);
  EXPECT_THAT(versions, ElementsAre("1.0 2.0+1"));
  const auto requests = fixture.rig.service.requests();
  ASSERT_THAT(requests, SizeIs(1));
  EXPECT_EQ(requests[0].path, "/services/uploadComplete.php");
  EXPECT_EQ(requests[0].body,
            "DEVICE_SERIAL_NUMBER=20&DEVICE_FIRMWARE_NAME=Pedal%20%26%20Co&DEVICE_FIRMWARE_VERSION=2.0%2B1");
  fixture.run(manager.sendUploadComplete(foundation::Uuid::random()));
  EXPECT_THAT(fixture.rig.service.requests(), SizeIs(1)) << "an id that nobody has";
}

TEST_F(ServiceRequestsTest, TheReportIsThatOfTheLastScanInItsOrder) {
  fixture.rig.bus.plugIn(std::make_unique<rig::VirtualBoard>(*rig::findBoardKind("TEENSY41"), "20"));
  fixture.rig.bus.plugIn(std::make_unique<rig::VirtualBoard>(*rig::findBoardKind("TEENSY2"), "10"));
  EXPECT_TRUE(resultOf(explorer.sendConfiguration()));
  explorer.scanUSBDevices();
  EXPECT_TRUE(resultOf(explorer.sendConfiguration()));
  const auto requests = fixture.rig.service.requests();
  ASSERT_THAT(requests, SizeIs(2));
  EXPECT_EQ(requests[0].body, R"({"devices":[]})") << "no scan yet: an empty list is sent";
  EXPECT_EQ(requests[1].path, "/services/deviceExplorer.php");
  EXPECT_EQ(requests[1].header("Content-Type"), "application/json");
  EXPECT_THAT(requests[1].body, testing::MatchesRegex(R"(.*usbmodem201.*usbmodem101.*)"));
}

/// Lines without what the transfer library says in words of its own.
std::string linesOf(std::istringstream text) {
  std::string lines;
  for (std::string line; std::getline(text, line);) {
    const auto isOfTheLibrary = line.starts_with("127.0.0.1: ") || line.starts_with("Erreur de validation");
    lines += "    " + (isOfTheLibrary ? line.substr(0, line.find(": ") + 1) : line) + "\n";
  }
  return lines;
}

/// Each request with its answer, how long it takes, and what is printed and written to the debug log.
TEST_F(ServiceRequestsTest, WhatComesOfEachMisbehaviourOfTheService) {
  ASSERT_TRUE(fetch());
  const auto listed = manager.deviceDescriptors;
  std::string outcomes;
  for (const char* fault :
       {"silent", "slow=59999", "slow=60001", "cut-off", "wrong-certificate", "not-found", "server-error",
        "not-json", "missing-key=mcu", "null-value=mcu", "wrong-type=mcu", "out-of-range", "empty-list"}) {
    fixture.misbehave(fault);
    outcomes += fmt::format("{}\n", fault);
    const auto note = [&](const char* request, const std::function<std::string()>& make) {
      fixture.printed.clear();
      fixture.debugged.clear();
      int ticks = 0;
      const auto ticker = foundation::Timer::repeating(fixture.runtime.clock(), fixture.runtime.mainQueue(),
                                                       250ms, [&ticks] { ++ticks; });
      const auto before = fixture.runtime.clock().now();
      const auto result = make();
      const auto time = fixture.runtime.clock().now() - before;
      EXPECT_GE(ticks, time / 250ms - 1) << "the main queue goes on meanwhile";
      outcomes += fmt::format("  {}: {}, {} ms{}\n", request, result, time / 1ms,
                              fixture.debugged.empty() ? "" : ", and a line in the debug log");
      outcomes += linesOf(std::istringstream(fixture.printed));
    };
    note("list", [&]() -> std::string {
      manager.isServerLoaded = false;
      EXPECT_TRUE(fetch() && manager.isServerLoaded);
      return manager.deviceDescriptors == listed ? "as before"
             : manager.deviceDescriptors.empty() ? "empty"
                                                 : "another";
    });
    note("completion", [&] {
      manager.managedDevices.set({device("30")});  // The service would list another version of "10".
      complete(0);
      return manager.managedDevices.get()[0].currentVersion;
    });
    note("report", [&] {
      const bool isSent = resultOf(explorer.sendConfiguration());
      return fmt::format("{} \"{}\"", isSent, explorer.lastError.get().substr(0, 10));
    });
  }
  expectText(OUTCOMES, outcomes);
}

TEST_F(ServiceRequestsTest, WithoutAnAddressOrATextNothingIsSent) {
  fixture.address = "https://my service";
  BootableDeviceManager nowhere(fixture.platform());
  nowhere.isServerLoaded = true;
  EXPECT_FALSE(resultOf(nowhere.fetchDeviceDescriptors()));
  EXPECT_FALSE(nowhere.isServerLoaded);
  nowhere.managedDevices.set({device("10")});
  fixture.run(nowhere.sendUploadComplete(nowhere.managedDevices.get()[0].id));
  EXPECT_EQ(nowhere.managedDevices.get()[0].currentVersion, "2.0+1");
  device::DeviceExplorer mute(fixture.platform().forExplorer());
  EXPECT_FALSE(resultOf(mute.sendConfiguration()));
  EXPECT_EQ(mute.lastError.get(), "URL not set");
  explorer.devices.set({{.serialNumber = "\xFF"}});
  EXPECT_FALSE(resultOf(explorer.sendConfiguration()));
  EXPECT_THAT(explorer.lastError.get(), HasSubstr("UTF-8"));
  EXPECT_THAT(fixture.rig.service.requests(), IsEmpty());
  EXPECT_THAT(fixture.debugged, IsEmpty());
}

TEST_F(ServiceRequestsTest, RecordsAreFoundByTheirIdAndByNothingElse) {
  manager.managedDevices.set({device("10"), device("10"), device("30")});
  const auto devices = manager.managedDevices.get();
  manager.updateStatus(devices[1].id, 5);
  manager.updateStatus(foundation::Uuid::random(), 7);
  const auto updated = manager.managedDevices.get();
  EXPECT_EQ(updated[0].status, 0U);
  EXPECT_EQ(updated[1].status, 5U);
  EXPECT_EQ(manager.nextDevice(devices[0].id).id, devices[1].id);
  EXPECT_EQ(manager.nextDevice(devices[1].id).portSerialNumber, "30");
  const std::hash<BootableDevice> hash;
  EXPECT_EQ(hash(devices[0]), hash(updated[0]));
  EXPECT_NE(hash(devices[1]), hash(updated[1]));
  EXPECT_NE(hash(devices[0]), hash(devices[1])) << "the id counts";
}

}  // namespace
}  // namespace karvex::upgrade
