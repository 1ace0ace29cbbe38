// The boards on a made-up bus: which devices there are, which of them have a serial port, what node that is,
// and who may use it.

#include <gmock/gmock.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <optional>
#include <string>
#include <variant>

#include "device/platform/linux/SerialNodes.hpp"
#include "device/platform/linux/SysfsSerialInterfaces.hpp"
#include "device/platform/linux/TermiosTerminalNodes.hpp"
#include "device/platform/linux/UdevBoardSurvey.hpp"
#include "device/platform/linux/UdevUsbBus.hpp"
#include "device/platform/linux/UsbText.hpp"
#include "foundation/run/VirtualRuntime.hpp"
#include "tests/device/linux/SysfsTree.hpp"

namespace karvex::device {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;
namespace fs = std::filesystem;

class UsbTest : public testing::Test {
 protected:
  /// Each device as "16c0:0489 0280 serial product", with "-" for what is absent.
  std::vector<std::string> walk(int status = 0) {
    std::vector<std::string> seen;
    const auto number = [](auto value) { return value ? fmt::format("{:04x}", *value) : "-"; };
    const auto visit = [&](const UsbDevice& device) {
      seen.push_back(fmt::format("{}:{} {} {} {}", number(device.idVendor), number(device.idProduct),
                                 number(device.bcdDevice), device.serialNumber.value_or("-"),
                                 device.product.value_or("-")));
    };
    EXPECT_EQ(UdevUsbBus().forEachDevice(visit), status);
    return seen;
  }
  void addPort(const std::string& place, const std::string& serialNumber,
               const std::vector<std::string>& ttys) {
    const auto board = tree.addUsbDevice(place, {"16c0", "0483", "0280", serialNumber});
    for (const auto& tty : ttys) {
      tree.add(fmt::format("{}/1-1:1.{}/{}", board, tty.back(), tty), "tty", "DEVNAME=" + tty);
    }
  }

  SysfsTree tree;
};

TEST_F(UsbTest, TheDevicesOfTheBusComeInItsOrderWithWhatTheyHave) {
  EXPECT_THAT(walk(), IsEmpty());
  tree.addUsbDevice("10-1", {"0000", "0AbC", "ffff", "g"});
  tree.addUsbDevice("1-10", {"10000", "0x16", "", "f"});
  tree.addUsbDevice("1-2.10", {"-200", "02g0", "0200 "});
  tree.addUsbDevice("1-2.9", {"+200", " 200", "0200", "12\n34", "Pedal\x1B[2J"});
  const auto board = tree.addUsbDevice("1-2", {"16c0", "0489", "0280", "1234560", "Tâble d'effets"});
  tree.addInterface(board, "1-2:1.0");
  tree.addUsbDevice("usb1", {"", "", "", "12\xFF", "Pedal\xFF"});
  EXPECT_THAT(walk(),
              ElementsAre("-:- -  Pedal\uFFFD", "16c0:0489 0280 1234560 Tâble d'effets",
                          "-:- 0200  Pedal\uFFFD[2J", "-:- - - -", "-:- - f -", "0000:0abc ffff g -"));

  tree.remove(board);
  EXPECT_EQ(walk().size(), 5U);
  fs::remove_all(tree.root / "sys/bus");
  std::ofstream(tree.root / "sys/bus").put('x');  // a file where a directory should be
  EXPECT_THAT(walk(ENOTDIR), IsEmpty());
}

TEST_F(UsbTest, APortIsPresentByTheWholeSerialNumberOfABoardWithATerminal) {
  const auto isPresent = [](const char* name) { return SysfsSerialInterfaces().isPresent(name); };
  tree.add("/devices/platform/ttyS0", "tty", "DEVNAME=ttyS0");
  addPort("1-1", "", {"ttyACM0"});
  addPort("1-2", "1234", {"ttyACM2", "ttyACM1"});
  addPort("1-3", "HUB", {});
  addPort("1-3/1-3.1", "777", {"ttyUSB0"});
  EXPECT_TRUE(isPresent("usbmodem12341"));
  EXPECT_TRUE(isPresent("usbmodem7771"));
  for (const char* absent : {"usbmodem1231", "usbmodem123451", "usbmodem1", "usbmodemHUB1", "usbmodem12342",
                             "xusbmodem12341", ""}) {
    EXPECT_FALSE(isPresent(absent)) << absent;
  }
  EXPECT_EQ(ttyNodeForSerialNumber(""), std::nullopt);
  tree.remove("/devices/1-3/1-3.1/1-1:1.0/ttyUSB0");
  EXPECT_FALSE(isPresent("usbmodem7771"));
}

TEST_F(UsbTest, ABoardsPortLeadsToItsFirstTerminalAndAnyOtherPathIsOpenedAsItStands) {
  using Cause = TerminalRefusal::Cause;
  addPort("1-2", "1234", {"ttyACM4", "ttyACM3"});
  foundation::VirtualRuntime runtime;
  TermiosTerminalNodes nodes{runtime.globalQueue()};
  const std::string port = "/dev/cu.usbmodem12341";
  const auto open = [&](const std::string& path) { return nodes.open(path, PortMode::receive); };
  const auto refusal = [&](const std::string& path) { return std::get<TerminalRefusal>(open(path)); };
  for (const std::string name : {"ttyACM7", "cu.usbmodem12342", "cu.usbmodem1", "cu.usbserial12341"}) {
    std::ofstream(tree.root / "dev" / name).close();
    EXPECT_EQ(open("/dev/" + name).index(), 0U) << name;
  }
  std::ofstream(tree.root / "dev/cu.usbmodem99991").close();
  EXPECT_EQ(refusal("/dev/cu.usbmodem99991"), TerminalRefusal{.cause = Cause::absent});
  EXPECT_EQ(refusal(port), (TerminalRefusal{Cause::absent, "/dev/ttyACM3", ""})) << "it went just then";
  std::ofstream(tree.root / "dev/ttyACM3").close();
  const auto first = open(port);
  EXPECT_EQ(refusal(port).cause, Cause::inUse);
  EXPECT_EQ(refusal(port).node, "/dev/ttyACM3");
}

TEST_F(UsbTest, ASurveyShowsEachBoardWithItsNodesAndWhatKeepsThisUserFromThem) {
  tree.addUsbDevice("usb1", {"1d6b", "0483"});
  addPort("1-10", "10", {"ttyACM0"});
  addPort("1-2", "2", {"ttyACM1"});
  tree.add("/devices/1-2/1-2:1.2/pcmC1D0p", "sound", "DEVNAME=snd/pcmC1D0p");
  tree.add("/devices/1-2/1-2:1.2/midiC1D0", "sound", "DEVNAME=snd/midiC1D0");
  const auto node = tree.root / "dev/ttyACM1";
  std::ofstream(node).close();
  std::vector<std::string> seen;
  for (const auto& board : UdevBoardSurvey().boards()) {
    seen.push_back(fmt::format("{} {}", board.place, board.device.serialNumber.value_or("-")));
    for (const auto& [path, obstacle, holders, isTagged] : board.nodes) {
      seen.push_back(fmt::format("{}: {}", path, obstacle));
    }
  }
  EXPECT_THAT(seen, ElementsAre("1-2 2", "/dev/ttyACM1: ", "/dev/snd/midiC1D0: No such file or directory",
                                "1-10 10", "/dev/ttyACM0: No such file or directory"));

  fs::permissions(node, fs::perms::none);
  fs::permissions(tree.root, fs::perms(0755));
  const bool isRoot = ::getuid() == 0;  // Who may open everything.
  ASSERT_TRUE(!isRoot || ::setresuid(65534, 65534, 0) == 0);
  const auto obstacle = obstacleOf("/dev/ttyACM1");
  ASSERT_TRUE(!isRoot || ::setresuid(0, 0, 0) == 0);
  EXPECT_THAT(obstacle, AllOf(StartsWith("Permission denied: it belongs to "), EndsWith(", mode 0")));
}

TEST(UsbTextTest, WhatIsNotCleanIsNoSerialNumberAndIsMarkedInAName) {
  const auto repeated = [](const std::string& text, std::size_t times) {
    return fmt::format("{}", fmt::join(std::vector(times, text), ""));
  };
  constexpr auto most = longestUsbString;
  const std::string x = "\uFFFD";
  const std::string clean = " !~\u00A0\u07FF\u0800\uD7FF\uE000\uFFFF\U00010000\U0010FFFF";
  const std::pair<std::string, std::string> cases[] = {
      {"", ""},
      {clean, clean},
      {repeated("\u20AC", most), repeated("\u20AC", most)},
      {repeated("\U0001F3B8", most / 2), repeated("\U0001F3B8", most / 2)},
      {std::string("a\0b", 3), "a" + x + "b"},
      {"a\x1B[31mb\r\n", "a" + x + "[31mb" + x + x},
      {"a\x7F\u009F", "a" + x + x},
      {"a\xE2\x82", "a" + x + x},
      {"\xE2 b", x + " b"},
      {repeated("a", most + 1), repeated("a", most)},
      {repeated("a", most - 1) + "\U0001F3B8", repeated("a", most - 1)},  // which takes two UTF-16 units
      {repeated("\xFF", 4096), repeated(x, most)},
  };
  for (const auto& [raw, name] : cases) {
    EXPECT_EQ(serialNumberFromUsb(raw), raw == name ? std::optional(raw) : std::nullopt) << name;
    EXPECT_EQ(productNameFromUsb(raw), name);
  }
}

}  // namespace
}  // namespace karvex::device
