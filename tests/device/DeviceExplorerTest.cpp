#include "device/DeviceExplorer.hpp"

#include <gmock/gmock.h>

#include <set>
#include <string>
#include <vector>

#include "foundation/Log.hpp"
#include "foundation/run/VirtualRuntime.hpp"

namespace karvex::device {
namespace {

using records::DeviceInfo;
using testing::ElementsAre;
using testing::IsEmpty;

struct FakeMachine final : public UsbBus, public SerialInterfaces {
  int forEachDevice(const std::function<void(const UsbDevice&)>& visit) override {
    for (const auto& device : devices) {
      visit(device);
    }
    return status;
  }
  bool isPresent(const std::string& interfaceName) override { return interfaceName == "usbmodem12341"; }

  std::vector<UsbDevice> devices;
  int status = 0;
};

UsbDevice board(std::optional<std::int32_t> product, std::optional<std::int32_t> revision = 0x0280,
                std::optional<std::string> serial = "1234", std::optional<std::int32_t> vendor = 0x16C0) {
  return {vendor, product, revision, std::move(serial), "Pedal"};
}

class DeviceExplorerTest : public testing::Test {
 protected:
  DeviceExplorerTest() {
    foundation::log::redirectSystem([this](std::string_view line) { logged.emplace_back(line); });
    foundation::log::redirectPrint([this](std::string_view text) { logged.emplace_back(text); });
  }
  ~DeviceExplorerTest() override {
    foundation::log::redirectSystem(nullptr);
    foundation::log::redirectPrint(nullptr);
  }
  std::vector<DeviceInfo> scan(const std::vector<UsbDevice>& devices) {
    machine.devices = devices;
    explorer.scanUSBDevices();
    return explorer.devices.get();
  }

  FakeMachine machine;
  foundation::VirtualRuntime runtime;
  foundation::UrlSession urlSession{runtime};
  DeviceExplorer explorer{{runtime, machine, machine, urlSession, ""}};
  std::vector<std::string> logged;
};

TEST_F(DeviceExplorerTest, TheEquipmentIsToldByProductAndForFourOfThemByRevision) {
  const std::set<std::int32_t> always = {0x0476, 0x0478, 0x0482, 0x0483, 0x0486, 0x0487, 0x048B,
                                         0x048C, 0x04D0, 0x04D1, 0x04D2, 0x04D3, 0x04D4};
  const std::set<std::int32_t> byRevision = {0x0485, 0x0488, 0x0489, 0x048A};
  const std::set<std::int32_t> revisions = {0x0200, 0x0211, 0x0212, 0x0279, 0x0280, 0x0281};
  for (std::int32_t product = 0x0470; product < 0x04E0; ++product) {
    for (std::int32_t revision = 0x01FF; revision < 0x0283; ++revision) {
      const bool wanted =
          always.contains(product) || (byRevision.contains(product) && revisions.contains(revision));
      ASSERT_EQ(scan({board(product, revision)}).size(), wanted ? 1U : 0U) << product << " " << revision;
    }
  }
  EXPECT_THAT(scan({board(0x0485, std::nullopt), board(std::nullopt), board(0x0483, 0x0280, "1", 0x16C1),
                    board(0x0483, 0x0280, "1", std::nullopt)}),
              IsEmpty());
  EXPECT_THAT(logged, IsEmpty());
}

TEST_F(DeviceExplorerTest, ARecordHoldsWhatTheDeviceSaysAndThePortByRule) {
  const UsbDevice nameless{0x16C0, 0x0483, std::nullopt, "77", std::nullopt},
      blank{0x16C0, 0x0489, 0x0279, "77", ""};
  const std::string raw = "Raw HID Device";
  const DeviceInfo first{"/dev/cu.usbmodem12341", "Pedal", "1234", 0x16C0, 0x0489, 0x0280, "Pedal"};
  const DeviceInfo second{"/dev/cu.usbmodem771", raw, "77", 0x16C0, 0x0483, 0, raw};
  const DeviceInfo third{"/dev/cu.usbmodem771", raw, "77", 0x16C0, 0x0489, 0x0279, raw};
  EXPECT_THAT(scan({board(0x0489), nameless, blank, board(0x0483, 0, std::nullopt), board(0x0476, 0, "")}),
              ElementsAre(first, second, third));
  EXPECT_THAT(logged,
              ElementsAre("> KARVEX : USB device 16C0:0483 has no serial number : passed over",
                          "> KARVEX : USB device 16C0:0476 has no usable serial number : passed over"));
  EXPECT_EQ(explorer.deviceForSerialNumber("77"), second);
  EXPECT_EQ(explorer.deviceForSerialNumber("123"), DeviceInfo{});
  EXPECT_EQ(explorer.deviceForSerialNumber(""), DeviceInfo{});
  EXPECT_TRUE(explorer.isSerialInterfacePresent("1234"));
  EXPECT_FALSE(explorer.isSerialInterfacePresent("123"));
}

TEST_F(DeviceExplorerTest, TheListIsThatOfTheLastScanAndGrowsBeforeItsObservers) {
  scan({board(0x0478, 0x0100), board(0x0482)});
  EXPECT_TRUE(explorer.isHalfkayDevicePresent());
  std::vector<std::size_t> sizes;
  const auto subscription =
      explorer.devices.observe([&sizes](const auto& list) { sizes.push_back(list.size()); });
  scan({board(0x0483), board(0x0482)});
  EXPECT_THAT(sizes, ElementsAre(0U, 1U, 2U));
  EXPECT_FALSE(explorer.isHalfkayDevicePresent());
  machine.status = -536870206;
  EXPECT_THAT(scan({}), IsEmpty());
  EXPECT_THAT(logged, ElementsAre("Erreur lors de l'obtention des services correspondants : -536870206\n"));
}

}  // namespace
}  // namespace karvex::device
