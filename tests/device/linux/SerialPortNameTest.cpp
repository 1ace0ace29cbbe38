// Which node a port's name leads to: a made-up /sys and /dev, with a pseudo-terminal as the board's node.

#include <gtest/gtest.h>
#include <termios.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <variant>

#include "device/SerialPort.hpp"
#include "device/platform/linux/TermiosTerminalNodes.hpp"
#include "foundation/VirtualRuntime.hpp"
#include "tests/device/linux/PseudoTerminal.hpp"
#include "tests/device/linux/SysfsTree.hpp"

namespace karvex::device {
namespace {

namespace fs = std::filesystem;

class SerialPortNameTest : public testing::Test {
 protected:
  SerialPortNameTest() {
    fs::create_directory(devDirectory());
    const auto board = tree.addUsbDevice("1-1", {{"serial", "1234"}});
    tree.addTty("ttyACM3", tree.addInterface(board, "1-1:1.0"));
  }

  fs::path devDirectory() const { return fs::path(tree.sysDirectory()).parent_path() / "dev"; }
  void addNode(const std::string& name) const { fs::create_symlink(terminal.path(), devDirectory() / name); }

  std::optional<TerminalRefusal> refusalOf(const std::string& path) {
    auto opened = nodes.open(path, PortMode::receive);
    const auto* refusal = std::get_if<TerminalRefusal>(&opened);
    return refusal != nullptr ? std::optional(*refusal) : std::nullopt;
  }

  PseudoTerminal terminal;
  SysfsTree tree;
  foundation::VirtualRuntime runtime;
  TermiosTerminalNodes nodes{runtime.globalQueue()};
};

TEST_F(SerialPortNameTest, ThePortOfABoardIsTheNodeWithItsSerialNumber) {
  addNode("ttyACM3");
  SerialPort port(nodes, runtime, "/dev/cu.usbmodem12341");
  port.open(PortMode::receive);
  EXPECT_EQ(port.path(), "/dev/cu.usbmodem12341");
  port.configure({.baudRateSetting = BaudRateSetting::bothWays(BaudRate::baud134)});
  const termios line = terminal.settings();
  EXPECT_EQ(cfgetospeed(&line), static_cast<speed_t>(B134));
  port.close();
}

TEST_F(SerialPortNameTest, ARefusalNamesTheNodeThatTheNameLedTo) {
  // A file does for a lock, and a link to a node elsewhere would be too much for umockdev's realpath().
  std::ofstream(devDirectory() / "ttyACM3").close();
  SerialPort port(nodes, runtime, "/dev/cu.usbmodem12341");
  port.open(PortMode::receive);
  const auto refusal = refusalOf("/dev/cu.usbmodem12341");
  port.close();
  ASSERT_TRUE(refusal.has_value());
  EXPECT_EQ(refusal->cause, TerminalRefusal::Cause::inUse);
  EXPECT_EQ(refusal->node, "/dev/ttyACM3");
}

TEST_F(SerialPortNameTest, ABoardsPortIsNeverOpenedAsAPath) {
  addNode("cu.usbmodem99991");
  EXPECT_EQ(refusalOf("/dev/cu.usbmodem99991"), TerminalRefusal{.cause = TerminalRefusal::Cause::absent});
  EXPECT_EQ(refusalOf("/dev/cu.usbmodem12341"),
            (TerminalRefusal{.cause = TerminalRefusal::Cause::absent, .node = "/dev/ttyACM3"}))
      << "the board's node, which went just then";
}

TEST_F(SerialPortNameTest, AnyOtherPathIsOpenedAsItStands) {
  for (const std::string name : {"ttyACM7", "cu.usbmodem12342", "cu.usbmodem1", "cu.usbserial12341"}) {
    addNode(name);
    EXPECT_EQ(refusalOf("/dev/" + name), std::nullopt) << name;
  }
}

}  // namespace
}  // namespace karvex::device
