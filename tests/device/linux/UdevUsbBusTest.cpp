#include "device/platform/linux/UdevUsbBus.hpp"

#include <gmock/gmock.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <vector>

#include "tests/device/linux/SysfsTree.hpp"

namespace karvex::device {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<UsbDevice> walk() {
  std::vector<UsbDevice> seen;
  UdevUsbBus bus;
  EXPECT_EQ(bus.forEachDevice([&seen](const UsbDevice& device) { seen.push_back(device); }), 0);
  return seen;
}

std::vector<std::string> serialNumbers() {
  std::vector<std::string> numbers;
  for (const auto& device : walk()) {
    numbers.push_back(device.serialNumber.value_or("none"));
  }
  return numbers;
}

TEST(UdevUsbBus, GivesEveryDeviceWithWhatItHas) {
  SysfsTree tree;
  tree.addUsbDevice("usb1", {{"idVendor", "1d6b"},
                             {"idProduct", "0002"},
                             {"bcdDevice", "0601"},
                             {"serial", "0000:00:14.0"},
                             {"product", "xHCI Host Controller"}});
  const auto board = tree.addUsbDevice("1-1", {{"idVendor", "16c0"},
                                               {"idProduct", "0489"},
                                               {"bcdDevice", "0280"},
                                               {"serial", "1234560"},
                                               {"product", "Tâble d'effets"}});
  tree.addInterface(board, "1-1:1.0");
  tree.addUsbDevice("1-2", {{"idVendor", "16c0"}, {"idProduct", "0478"}});

  const auto seen = walk();
  ASSERT_EQ(seen.size(), 3U);  // an interface is no device
  EXPECT_EQ(seen[0].idVendor, 0x1D6B);
  EXPECT_EQ(seen[0].product, "xHCI Host Controller");
  EXPECT_EQ(seen[1].idVendor, 0x16C0);
  EXPECT_EQ(seen[1].idProduct, 0x0489);
  EXPECT_EQ(seen[1].bcdDevice, 0x0280);
  EXPECT_EQ(seen[1].serialNumber, "1234560");
  EXPECT_EQ(seen[1].product, "Tâble d'effets");
  EXPECT_EQ(seen[2].idProduct, 0x0478);
  EXPECT_EQ(seen[2].bcdDevice, std::nullopt);
  EXPECT_EQ(seen[2].serialNumber, std::nullopt);
  EXPECT_EQ(seen[2].product, std::nullopt);
}

TEST(UdevUsbBus, WalksInBusOrderNotInThatOfTheNames) {
  SysfsTree tree;
  const std::vector<std::string> busOrder = {"usb1", "1-1",  "1-2",     "1-2.1", "1-2.2", "1-2.10",
                                             "1-10", "usb2", "2-1.1.3", "usb10", "10-1"};
  for (const auto* name :
       {"10-1", "usb10", "1-10", "1-2.10", "usb2", "1-2", "2-1.1.3", "1-2.2", "1-1", "1-2.1", "usb1"}) {
    tree.addUsbDevice(name, {{"serial", name}});
  }
  EXPECT_EQ(serialNumbers(), busOrder);
}

TEST(UdevUsbBus, ANumberThatIsNotWhollyHexadecimalIsAbsent) {
  const std::vector<std::pair<std::string, std::optional<std::int32_t>>> cases = {
      {"0000", 0},
      {"ffff", 0xFFFF},
      {"0AbC", 0x0ABC},
      {"", std::nullopt},
      {"02g0", std::nullopt},
      {"0x200", std::nullopt},
      {"-200", std::nullopt},
      {"+200", std::nullopt},
      {"0200 ", std::nullopt},
      {" 0200", std::nullopt},
      {"10000", std::nullopt},
  };
  SysfsTree tree;
  for (std::size_t i = 0; i < cases.size(); ++i) {
    const auto& text = cases[i].first;
    tree.addUsbDevice("1-" + std::to_string(i + 1),
                      {{"idVendor", text}, {"idProduct", text}, {"bcdDevice", text}});
  }
  const auto seen = walk();
  ASSERT_EQ(seen.size(), cases.size());
  for (std::size_t i = 0; i < cases.size(); ++i) {
    const auto& [text, value] = cases[i];
    EXPECT_EQ(seen[i].idVendor, value) << text;
    EXPECT_EQ(seen[i].idProduct, value) << text;
    EXPECT_EQ(seen[i].bcdDevice, value) << text;
  }
}

TEST(UdevUsbBus, HostileStringsAreDroppedOrMendedAndTheWalkGoesOn) {
  SysfsTree tree;
  tree.addUsbDevice("1-1", {{"serial", "12\n34"}, {"product", "Pedal\x1B[2J"}});
  tree.addUsbDevice("1-2", {{"serial",
                             "12\xFF"
                             "34"},
                            {"product", "Pedal\xFF"}});
  tree.addUsbDevice("1-3", {{"serial", "1234"}, {"product", "Pedal"}});

  const auto seen = walk();
  ASSERT_EQ(seen.size(), 3U);
  EXPECT_EQ(seen[0].serialNumber, "");
  EXPECT_EQ(seen[0].product, "Pedal\uFFFD[2J");
  EXPECT_EQ(seen[1].serialNumber, "");
  EXPECT_EQ(seen[1].product, "Pedal\uFFFD");
  EXPECT_EQ(seen[2].serialNumber, "1234");
}

TEST(UdevUsbBus, AListThatCannotBeHadGivesTheErrorNumberAndVisitsNothing) {
  SysfsTree tree;
  tree.addUsbDevice("1-1", {{"serial", "1"}});
  const std::filesystem::path bus = std::filesystem::path(tree.sysDirectory()) / "bus";
  std::filesystem::remove_all(bus);
  std::ofstream(bus).put('x');  // a file where a directory should be

  UdevUsbBus usb;
  int visits = 0;
  EXPECT_EQ(usb.forEachDevice([&visits](const UsbDevice&) { ++visits; }), ENOTDIR);
  EXPECT_EQ(visits, 0);
}

}  // namespace
}  // namespace karvex::device
