#include "device/platform/linux/SysfsSerialInterfaces.hpp"

#include <gtest/gtest.h>

#include "device/platform/linux/SerialNodes.hpp"
#include "tests/device/linux/SysfsTree.hpp"

namespace karvex::device {
namespace {

std::string addBoard(SysfsTree& tree, const std::string& name, const SysfsTree::Entries& attributes) {
  return tree.addUsbDevice(name, attributes);
}

std::string addBoardTty(SysfsTree& tree, const std::string& board, const std::string& name,
                        const std::string& interfaceName) {
  return tree.addTty(name, tree.addInterface(board, interfaceName));
}

TEST(SysfsSerialInterfaces, ABoardIsFoundByItsWholeSerialNumberAmongOtherTerminals) {
  SysfsTree tree;
  tree.addTty("ttyS0", "");
  addBoardTty(tree, addBoard(tree, "1-1", {{"product", "no number"}}), "ttyACM0", "1-1:1.0");
  addBoardTty(tree, addBoard(tree, "1-2", {{"serial", "1234"}}), "ttyACM1", "1-2:1.0");
  addBoardTty(tree, addBoard(tree, "1-3", {{"serial", "777"}}), "ttyUSB0", "1-3:1.0");

  SysfsSerialInterfaces interfaces;
  const std::vector<std::pair<std::string, bool>> cases = {
      {"usbmodem12341", true},          {"usbmodem7771", true}, {"usbmodem1231", false},
      {"usbmodem123451", false},        {"usbmodem1", false},   {"usbmodem12342", false},
      {"/dev/cu.usbmodem12341", false}, {"ttyACM1", false},     {"", false},
  };
  for (const auto& [name, present] : cases) {
    EXPECT_EQ(interfaces.isPresent(name), present) << name;
  }
  EXPECT_EQ(ttyNodeForSerialNumber("1234"), "/dev/ttyACM1");
  EXPECT_EQ(ttyNodeForSerialNumber("777"), "/dev/ttyUSB0");
  EXPECT_EQ(ttyNodeForSerialNumber("123"), std::nullopt);
}

TEST(SysfsSerialInterfaces, PresenceFollowsTheTerminal) {
  SysfsTree tree;
  SysfsSerialInterfaces interfaces;
  EXPECT_FALSE(interfaces.isPresent("usbmodem12341"));
  const auto board = addBoard(tree, "1-1", {{"serial", "1234"}});
  const auto tty = addBoardTty(tree, board, "ttyACM0", "1-1:1.0");
  EXPECT_TRUE(interfaces.isPresent("usbmodem12341"));
  tree.remove(tty);
  EXPECT_FALSE(interfaces.isPresent("usbmodem12341"));
}

TEST(SysfsSerialInterfaces, ABoardInAHubIsNotTakenForItsHub) {
  SysfsTree tree;
  const auto hub = addBoard(tree, "1-1", {{"serial", "HUB"}});
  const auto board = tree.addUsbDevice("1-1.1", {{"serial", "1234"}});
  addBoardTty(tree, board, "ttyACM0", "1-1.1:1.0");
  EXPECT_FALSE(SysfsSerialInterfaces().isPresent("usbmodemHUB1"));
  EXPECT_TRUE(SysfsSerialInterfaces().isPresent("usbmodem12341"));
}

TEST(SerialNodes, ABoardWithSeveralTerminalsGivesTheFirst) {
  SysfsTree tree;
  const auto board = addBoard(tree, "1-1", {{"serial", "1234"}});
  addBoardTty(tree, board, "ttyACM1", "1-1:1.2");
  addBoardTty(tree, board, "ttyACM0", "1-1:1.0");
  EXPECT_EQ(ttyNodeForSerialNumber("1234"), "/dev/ttyACM0");
}

TEST(SerialNodes, AnEmptyNumberIsNoBoardsNumber) {
  SysfsTree tree;
  addBoardTty(tree, addBoard(tree, "1-1", {{"serial", ""}}), "ttyACM0", "1-1:1.0");
  EXPECT_EQ(ttyNodeForSerialNumber(""), std::nullopt);
}

}  // namespace
}  // namespace karvex::device
