// The boards on a made-up bus: which devices there are, which of them have a serial port, and what node that
// is.

#include <gmock/gmock.h>
#include <termios.h>

#include <cerrno>
#include <fstream>
#include <optional>
#include <string>
#include <variant>

#include "device/platform/linux/SysfsSerialInterfaces.hpp"
#include "device/platform/linux/TermiosTerminalNodes.hpp"
#include "device/platform/linux/UdevUsbBus.hpp"
#include "device/platform/linux/UsbText.hpp"
#include "foundation/VirtualRuntime.hpp"
#include "tests/device/linux/SysfsTree.hpp"

namespace karvex::device {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
namespace fs = std::filesystem;

class UsbTest : public testing::Test {
 protected:
  /// Each device as "16c0:0489 0280 serial product", with "-" for what is absent.
  std::vector<std::string> walk(int status = 0) {
    std::vector<std::string> seen;
    EXPECT_EQ(UdevUsbBus().forEachDevice([&seen](const UsbDevice& device) {
      const auto number = [](std::optional<std::int32_t> value) {
        return value ? fmt::format("{:04x}", *value) : "-";
      };
      seen.push_back(fmt::format("{}:{} {} {} {}", number(device.idVendor), number(device.idProduct),
                                 number(device.bcdDevice), device.serialNumber.value_or("-"),
                                 device.product.value_or("-")));
    }),
              status);
    return seen;
  }
  void addPort(const std::string& place, const std::string& serialNumber,
               const std::vector<std::string>& ttys) {
    const auto board = tree.addUsbDevice(place, {{"serial", serialNumber}});
    for (const auto& tty : ttys) {
      tree.addTty(tty, tree.addInterface(board, place.substr(place.rfind('/') + 1) + ":1." + tty.back()));
    }
  }

  SysfsTree tree;
};

TEST_F(UsbTest, TheDevicesOfTheBusComeInItsOrderWithWhatTheyHave) {
  EXPECT_THAT(walk(), IsEmpty());
  tree.addUsbDevice("10-1",
                    {{"idVendor", "0000"}, {"idProduct", "0AbC"}, {"bcdDevice", "ffff"}, {"serial", "g"}});
  tree.addUsbDevice("1-10",
                    {{"idVendor", "10000"}, {"idProduct", "0x16"}, {"bcdDevice", ""}, {"serial", "f"}});
  tree.addUsbDevice("1-2.10",
                    {{"idVendor", "-200"}, {"idProduct", "02g0"}, {"bcdDevice", "0200 "}, {"serial", "e"}});
  tree.addUsbDevice("1-2.9", {{"idVendor", "+200"},
                              {"idProduct", " 200"},
                              {"bcdDevice", "0200"},
                              {"serial", "12\n34"},
                              {"product", "Pedal\x1B[2J"}});
  const auto board = tree.addUsbDevice("1-2", {{"idVendor", "16c0"},
                                               {"idProduct", "0489"},
                                               {"bcdDevice", "0280"},
                                               {"serial", "1234560"},
                                               {"product", "Tâble d'effets"}});
  tree.addInterface(board, "1-2:1.0");
  tree.addUsbDevice("usb1", {{"serial", "12\xFF"}, {"product", "Pedal\xFF"}});
  EXPECT_THAT(walk(),
              ElementsAre("-:- -  Pedal\uFFFD", "16c0:0489 0280 1234560 Tâble d'effets",
                          "-:- 0200  Pedal\uFFFD[2J", "-:- - e -", "-:- - f -", "0000:0abc ffff g -"));

  tree.remove(board);
  EXPECT_EQ(walk().size(), 5U);
  fs::remove_all(tree.root / "sys/bus");
  std::ofstream(tree.root / "sys/bus").put('x');  // a file where a directory should be
  EXPECT_THAT(walk(ENOTDIR), IsEmpty());
}

TEST_F(UsbTest, APortIsPresentByTheWholeSerialNumberOfABoardWithATerminal) {
  tree.addTty("ttyS0", "/devices/platform");
  addPort("1-1", "", {"ttyACM0"});
  addPort("1-2", "1234", {"ttyACM2", "ttyACM1"});
  addPort("1-3", "HUB", {});
  addPort("1-3/1-3.1", "777", {"ttyUSB0"});
  for (const auto& [name, present] : {std::pair("usbmodem12341", true),
                                      {"usbmodem7771", true},
                                      {"usbmodem1231", false},
                                      {"usbmodem123451", false},
                                      {"usbmodem1", false},
                                      {"usbmodemHUB1", false},
                                      {"usbmodem12342", false},
                                      {"/dev/cu.usbmodem12341", false},
                                      {"xusbmodem12341", false},
                                      {"", false}}) {
    EXPECT_EQ(SysfsSerialInterfaces().isPresent(name), present) << name;
  }
  tree.remove("/devices/1-3/1-3.1/1-3.1:1.0/ttyUSB0");
  EXPECT_FALSE(SysfsSerialInterfaces().isPresent("usbmodem7771"));
}

TEST_F(UsbTest, ABoardsPortLeadsToItsFirstTerminalAndAnyOtherPathIsOpenedAsItStands) {
  using Cause = TerminalRefusal::Cause;
  addPort("1-2", "1234", {"ttyACM4", "ttyACM3"});
  foundation::VirtualRuntime runtime;
  TermiosTerminalNodes nodes{runtime.globalQueue()};
  const std::string port = "/dev/cu.usbmodem12341";
  const auto open = [&](const std::string& path) { return nodes.open(path, PortMode::receive); };
  const auto refusal = [&](const std::string& path) { return std::get<TerminalRefusal>(open(path)); };
  for (const std::string name :
       {"ttyACM7", "cu.usbmodem12342", "cu.usbmodem1", "cu.usbmodem99991", "cu.usbserial12341"}) {
    std::ofstream(tree.root / "dev" / name).close();
    EXPECT_EQ(std::holds_alternative<TerminalRefusal>(open("/dev/" + name)), name == "cu.usbmodem99991")
        << name;
  }
  EXPECT_EQ(refusal("/dev/cu.usbmodem99991"), TerminalRefusal{.cause = Cause::absent});
  EXPECT_EQ(refusal(port), (TerminalRefusal{.cause = Cause::absent, .node = "/dev/ttyACM3"}))
      << "it went just then";
  std::ofstream(tree.root / "dev/ttyACM3").close();
  const auto first = open(port);
  EXPECT_EQ(refusal(port).cause, Cause::inUse);
  EXPECT_EQ(refusal(port).node, "/dev/ttyACM3");
}

TEST(UsbTextTest, WhatIsNotCleanIsNoSerialNumberAndIsMarkedInAName) {
  const auto repeated = [](std::string_view text, std::size_t times) {
    std::string result;
    while (times-- > 0) {
      result += text;
    }
    return result;
  };
  constexpr auto most = longestUsbString;
  const std::string x = "\uFFFD";
  const std::pair<std::string, std::string> cases[] = {
      {"", ""},
      {" !~", " !~"},
      {"\u00A0\u07FF\u0800\uD7FF\uE000\uFFFF\U00010000\U0010FFFF",
       "\u00A0\u07FF\u0800\uD7FF\uE000\uFFFF\U00010000\U0010FFFF"},
      {repeated("\u20AC", most), repeated("\u20AC", most)},
      {repeated("\U0001F3B8", most / 2), repeated("\U0001F3B8", most / 2)},
      {std::string("a\0b", 3), "a" + x + "b"},
      {"a\x1B[31mb\r\n", "a" + x + "[31mb" + x + x},
      {"a\x7F\u009F", "a" + x + x},
      {"\x80 \xFF\xFE", x + " " + x + x},
      {"a\xE2\x82", "a" + x + x},  // cut short by the end, a lead byte, ASCII
      {"a\xC3\xC3\xA9", "a" + x + "é"},
      {"\xE2 b", x + " b"},
      {"\xC0\xAF\xE0\x80\xAF", repeated(x, 5)},          // a slash in two and in three bytes
      {"\xF0\x8F\xBF\xBF", repeated(x, 4)},              // U+FFFF in four bytes
      {"\xED\xA0\x80\xF4\x90\x80\x80", repeated(x, 7)},  // a surrogate, and above U+10FFFF
      {repeated("a", most + 1), repeated("a", most)},
      {repeated("a", most - 1) + "\U0001F3B8", repeated("a", most - 1)},  // which takes two UTF-16 units
      {repeated("\xFF", 4096), repeated(x, most)},
  };
  for (const auto& [raw, name] : cases) {
    EXPECT_EQ(serialNumberFromUsb(raw), raw == name ? std::optional(raw) : std::nullopt) << name;
    EXPECT_EQ(productNameFromUsb(raw), name);
  }
  EXPECT_EQ(productNameFromUsb(std::string_view("\u20AC").substr(0, 2)), x + x)
      << "nothing after the text is read";
}

}  // namespace
}  // namespace karvex::device
