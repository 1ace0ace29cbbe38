#include <gmock/gmock.h>

#include <memory>

#include "tests/upgrade/UpgradeBench.hpp"

namespace karvex::upgrade {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class EquipmentReportTest : public testing::Test {
 protected:
  bool send(device::DeviceExplorer& explorer) {
    bool result = false;
    const auto run = [](device::DeviceExplorer& of, bool& into) -> foundation::Task<> {
      into = co_await of.sendConfiguration();
    };
    bench.run(run(explorer, result));
    return result;
  }
  void misbehave(const char* fault) {
    rig::ServiceFaults faults;
    ASSERT_EQ(rig::addServiceFault(fault, faults), std::nullopt);
    bench.service.setFaults(faults);
  }

  UpgradeBench bench;
};

TEST_F(EquipmentReportTest, TheLastScanGoesOutInItsOrder) {
  bench.bus.plugIn(std::make_unique<rig::VirtualBoard>(*rig::findBoardKind("TEENSY41"), "20"));
  bench.bus.plugIn(std::make_unique<rig::VirtualBoard>(*rig::findBoardKind("TEENSY2"), "10"));
  device::DeviceExplorer explorer(bench.platform().forExplorer());
  EXPECT_TRUE(send(explorer));
  explorer.scanUSBDevices();
  EXPECT_TRUE(send(explorer));
  const auto requests = bench.service.requests();
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
  device::DeviceExplorer explorer(bench.platform().forExplorer());
  misbehave("wrong-certificate");
  EXPECT_FALSE(send(explorer));
  EXPECT_THAT(explorer.lastError.get(), HasSubstr("127.0.0.1"));
  EXPECT_THAT(bench.debugged, IsEmpty());
  misbehave("server-error");
  EXPECT_TRUE(send(explorer));
  EXPECT_EQ(explorer.lastError.get(), "");
  EXPECT_THAT(bench.debugged, ElementsAre(HasSubstr("> httpPost => resp = ")));
  misbehave("silent");
  const auto before = bench.runtime.clock().now();
  EXPECT_FALSE(send(explorer));
  EXPECT_EQ(bench.runtime.clock().now() - before, std::chrono::seconds(60));
}

TEST_F(EquipmentReportTest, WhatCannotBeSentIsSaidWithoutATransfer) {
  auto platform = bench.platform().forExplorer();
  platform.reportUrl = "https://my service/report";
  device::DeviceExplorer nowhere(platform);
  EXPECT_FALSE(send(nowhere));
  EXPECT_EQ(nowhere.lastError.get(), "URL not set");
  device::DeviceExplorer explorer(bench.platform().forExplorer());
  explorer.devices.set({{.serialNumber = "\xFF"}});
  EXPECT_FALSE(send(explorer));
  EXPECT_THAT(explorer.lastError.get(), HasSubstr("UTF-8"));
  EXPECT_THAT(bench.service.requests(), IsEmpty());
}

}  // namespace
}  // namespace karvex::upgrade
