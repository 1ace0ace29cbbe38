#include <gmock/gmock.h>

#include <memory>
#include <thread>

#include "tests/upgrade/UpgradeFixture.hpp"

namespace karvex::upgrade {
namespace {

using namespace std::chrono_literals;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Ne;
using testing::SizeIs;
using testing::StartsWith;

class EquipmentReportTest : public testing::Test {
 protected:
  bool send(device::DeviceExplorer& explorer) {
    bool result = false;
    const auto run = [](device::DeviceExplorer& of, bool& into) -> foundation::Task<> {
      into = co_await of.sendConfiguration();
    };
    fixture.run(run(explorer, result));
    return result;
  }

  UpgradeFixture fixture{0};
};

TEST_F(EquipmentReportTest, TheLastScanGoesOutInItsOrder) {
  fixture.rig.bus.plugIn(std::make_unique<rig::VirtualBoard>(*rig::findBoardKind("TEENSY41"), "20"));
  fixture.rig.bus.plugIn(std::make_unique<rig::VirtualBoard>(*rig::findBoardKind("TEENSY2"), "10"));
  device::DeviceExplorer explorer(fixture.platform().forExplorer());
  EXPECT_TRUE(send(explorer));
  explorer.scanUSBDevices();
  EXPECT_TRUE(send(explorer));
  const auto requests = fixture.rig.service.requests();
  ASSERT_THAT(requests, SizeIs(2));
  EXPECT_EQ(requests[0].body, R"({"devices":[]})") << "no scan yet: an empty list is sent";
  EXPECT_EQ(requests[1].method, "POST");
  EXPECT_EQ(requests[1].path, "/services/deviceExplorer.php");
  EXPECT_EQ(requests[1].header("Content-Type"), "application/json");
  EXPECT_EQ(
      requests[1].body,
      R"({"devices":[{"portName":"/dev/cu.usbmodem201","deviceName":"TEENSY41 MIDI","serialNumber":"20",)"
      R"("USBvendorId":5824,"USBproductId":1161,"USBbcdDevice":640,"USBproductName":"TEENSY41 MIDI"},)"
      R"({"portName":"/dev/cu.usbmodem101","deviceName":"TEENSY2 MIDI","serialNumber":"10",)"
      R"("USBvendorId":5824,"USBproductId":1161,"USBbcdDevice":512,"USBproductName":"TEENSY2 MIDI"}]})");
}

TEST_F(EquipmentReportTest, AnyAnswerIsASuccessAndAFailureIsToldUntilTheNextOne) {
  const struct {
    const char* fault;
    bool isSent;
    std::chrono::seconds takes{0};
  } faultCases[] = {
      {"wrong-certificate", false},
      {"server-error", true},
      {"silent", false, 60s},
      {"slow", true, 5s},
  };
  device::DeviceExplorer explorer(fixture.platform().forExplorer());
  for (const auto& example : faultCases) {
    SCOPED_TRACE(example.fault);
    fixture.misbehave(example.fault);
    fixture.debugged.clear();
    const auto before = fixture.runtime.clock().now();
    EXPECT_EQ(send(explorer), example.isSent);
    EXPECT_EQ(fixture.runtime.clock().now() - before, example.takes);
    if (example.isSent) {
      EXPECT_EQ(explorer.lastError.get(), "");
      EXPECT_THAT(fixture.debugged, ElementsAre(StartsWith("> httpPost => resp = " + fixture.address)));
    } else {
      EXPECT_THAT(explorer.lastError.get(), StartsWith("127.0.0.1: "));
      EXPECT_THAT(fixture.debugged, IsEmpty());
    }
  }
}

TEST_F(EquipmentReportTest, WhatCannotBeSentIsSaidWithoutATransfer) {
  auto platform = fixture.platform().forExplorer();
  platform.reportUrl = "https://my service/report";
  device::DeviceExplorer nowhere(platform);
  EXPECT_FALSE(send(nowhere));
  EXPECT_EQ(nowhere.lastError.get(), "URL not set");
  device::DeviceExplorer explorer(fixture.platform().forExplorer());
  explorer.devices.set({{.serialNumber = "\xFF"}});
  EXPECT_FALSE(send(explorer));
  EXPECT_THAT(explorer.lastError.get(), HasSubstr("UTF-8"));
  EXPECT_THAT(fixture.rig.service.requests(), IsEmpty());
}

}  // namespace
}  // namespace karvex::upgrade
