#include "device/DeviceExplorer.hpp"

#include <gmock/gmock.h>

#include <set>
#include <string>
#include <vector>

#include "foundation/Log.hpp"
#include "foundation/VirtualRuntime.hpp"

namespace karvex::device {
namespace {

using records::DeviceInfo;
using testing::ElementsAre;
using testing::IsEmpty;

class FakeUsbBus final : public UsbBus {
 public:
  int forEachDevice(const std::function<void(const UsbDevice&)>& visit) override {
    if (status == 0) {
      for (const auto& device : devices) {
        visit(device);
      }
    }
    return status;
  }
  std::vector<UsbDevice> devices;
  int status = 0;
};

class FakeSerialInterfaces final : public SerialInterfaces {
 public:
  bool isPresent(const std::string& interfaceName) override { return names.contains(interfaceName); }
  std::set<std::string> names;
};

UsbDevice board(std::int32_t product, std::optional<std::int32_t> revision = 0x0280,
                std::optional<std::string> serial = "1234") {
  return {.idVendor = 0x16C0,
          .idProduct = product,
          .bcdDevice = revision,
          .serialNumber = std::move(serial),
          .product = "Pedal"};
}

class DeviceExplorerTest : public testing::Test {
 protected:
  DeviceExplorerTest() {
    foundation::log::redirectSystem([this](std::string_view line) { logged.emplace_back(line); });
    foundation::log::redirectPrint([this](std::string_view text) { printed += text; });
  }
  ~DeviceExplorerTest() override {
    foundation::log::redirectSystem(nullptr);
    foundation::log::redirectPrint(nullptr);
  }
  bool accepts(const UsbDevice& device) {
    bus.devices = {device};
    explorer.scanUSBDevices();
    return !explorer.devices.get().empty();
  }

  FakeUsbBus bus;
  FakeSerialInterfaces serialInterfaces;
  foundation::VirtualRuntime runtime;
  foundation::UrlSession urlSession{runtime};
  DeviceExplorer explorer{{runtime, bus, serialInterfaces, urlSession, ""}};
  std::vector<std::string> logged;
  std::string printed;
};

TEST_F(DeviceExplorerTest, TheEquipmentIsToldByProductAndForFourOfThemByRevision) {
  const std::set<std::int32_t> always = {0x0476, 0x0478, 0x0482, 0x0483, 0x0486, 0x0487, 0x048B,
                                         0x048C, 0x04D0, 0x04D1, 0x04D2, 0x04D3, 0x04D4};
  const std::set<std::int32_t> byRevision = {0x0485, 0x0488, 0x0489, 0x048A};
  const std::set<std::int32_t> revisions = {0x0200, 0x0211, 0x0212, 0x0279, 0x0280, 0x0281};
  for (std::int32_t product = 0x0400; product < 0x0600; ++product) {
    for (const auto revision :
         {0x0000, 0x0200, 0x0201, 0x0211, 0x0212, 0x0277, 0x0279, 0x0280, 0x0281, 0x0282}) {
      const bool wanted =
          always.contains(product) || (byRevision.contains(product) && revisions.contains(revision));
      ASSERT_EQ(accepts(board(product, revision)), wanted) << std::hex << product << " " << revision;
    }
    ASSERT_EQ(accepts(board(product, std::nullopt)), always.contains(product)) << std::hex << product;
  }
}

TEST_F(DeviceExplorerTest, AnotherVendorOrNoneIsPassedOver) {
  auto device = board(0x0483);
  device.idVendor = 0x16C1;
  EXPECT_FALSE(accepts(device));
  device.idVendor.reset();
  EXPECT_FALSE(accepts(device));
  device = board(0x0483);
  device.idProduct.reset();
  EXPECT_FALSE(accepts(device));
  EXPECT_THAT(logged, IsEmpty());
}

TEST_F(DeviceExplorerTest, ARecordHoldsWhatTheDeviceSaysAndThePortByRule) {
  auto nameless = board(0x0483, std::nullopt, "77");
  nameless.product.reset();
  auto blank = board(0x0489, 0x0279, "77");
  blank.product = "";
  bus.devices = {board(0x0489), nameless, blank};
  explorer.scanUSBDevices();
  const DeviceInfo first{"/dev/cu.usbmodem12341", "Pedal", "1234", 0x16C0, 0x0489, 0x0280, "Pedal"};
  const DeviceInfo second{"/dev/cu.usbmodem771", "Raw HID Device", "77", 0x16C0, 0x0483, 0, "Raw HID Device"};
  const DeviceInfo third{"/dev/cu.usbmodem771", "Raw HID Device", "77", 0x16C0, 0x0489, 0x0279,
                         "Raw HID Device"};
  EXPECT_THAT(explorer.devices.get(), ElementsAre(first, second, third)) << "same serial number, two records";
  EXPECT_EQ(explorer.deviceForSerialNumber("77"), second);
  EXPECT_EQ(explorer.deviceForSerialNumber("123"), DeviceInfo{});
  EXPECT_EQ(explorer.deviceForSerialNumber(""), DeviceInfo{});
}

TEST_F(DeviceExplorerTest, ADeviceWithoutASerialNumberIsPassedOverWithOneLine) {
  bus.devices = {board(0x0483, 0x0280, std::nullopt), board(0x0476, 0x0280, ""), board(0x0483)};
  explorer.scanUSBDevices();
  EXPECT_EQ(explorer.devices.get().size(), 1U);
  EXPECT_THAT(logged,
              ElementsAre("> KARVEX : USB device 16C0:0483 has no serial number : passed over",
                          "> KARVEX : USB device 16C0:0476 has no usable serial number : passed over"));
}

TEST_F(DeviceExplorerTest, ObserversSeeTheListEmptiedAndGrow) {
  bus.devices = {board(0x0483), board(0x0482)};
  explorer.scanUSBDevices();
  std::vector<std::size_t> sizes;
  const auto subscription = explorer.devices.observe(
      [&sizes](const std::vector<DeviceInfo>& list) { sizes.push_back(list.size()); });
  explorer.scanUSBDevices();
  EXPECT_THAT(sizes, ElementsAre(0U, 1U, 2U));
}

TEST_F(DeviceExplorerTest, ABusThatCannotBeWalkedLeavesAnEmptyListAndALine) {
  ASSERT_TRUE(accepts(board(0x0483)));
  explorer.lastError.set("earlier");
  bus.status = -536870206;
  explorer.scanUSBDevices();
  EXPECT_THAT(explorer.devices.get(), IsEmpty());
  EXPECT_EQ(printed, "Erreur lors de l'obtention des services correspondants : -536870206\n");
  EXPECT_EQ(explorer.lastError.get(), "earlier");
}

TEST_F(DeviceExplorerTest, HalfKayIsTheLastScansAndTheSerialInterfaceThisMoments) {
  EXPECT_TRUE(accepts(board(0x0478, 0x0100)));
  EXPECT_TRUE(explorer.isHalfkayDevicePresent());
  bus.devices.clear();
  EXPECT_TRUE(explorer.isHalfkayDevicePresent());
  explorer.scanUSBDevices();
  EXPECT_FALSE(explorer.isHalfkayDevicePresent());
  serialInterfaces.names = {"usbmodem12341"};
  EXPECT_TRUE(explorer.isSerialInterfacePresent("1234"));
  EXPECT_FALSE(explorer.isSerialInterfacePresent("123"));
}

}  // namespace
}  // namespace karvex::device
