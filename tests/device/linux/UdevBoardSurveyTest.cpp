#include "device/platform/linux/UdevBoardSurvey.hpp"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/device/linux/PseudoTerminal.hpp"
#include "tests/device/linux/SysfsTree.hpp"

namespace karvex::device {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::Field;
using testing::IsEmpty;
using testing::StartsWith;

TEST(UdevBoardSurvey, EachBoardWithItsNodesAndNoOtherDevice) {
  SysfsTree tree;
  const auto addBoard = [&tree](const std::string& place, const std::string& vendor, const std::string& tty) {
    const auto board =
        tree.addUsbDevice(place, {{"idVendor", vendor}, {"idProduct", "0483"}, {"serial", place}});
    tree.addTty(tty, tree.addInterface(board, place + ":1.0"));
  };
  addBoard("1-10", "16c0", "ttyACM0");
  addBoard("1-2", "16c0", "ttyACM1");
  addBoard("1-1", "1d6b", "ttyACM2");
  const auto dev = std::filesystem::path(tree.sysDirectory()).parent_path() / "dev";
  std::filesystem::create_directories(dev);
  std::ofstream(dev / "ttyACM1").close();

  const auto boards = UdevBoardSurvey().boards();
  ASSERT_THAT(boards, ElementsAre(Field(&SurveyedBoard::place, "1-2"), Field(&SurveyedBoard::place, "1-10")));
  EXPECT_EQ(boards[0].device.serialNumber, "1-2");
  EXPECT_THAT(boards[0].nodes, ElementsAre(AllOf(Field(&SurveyedNode::path, "/dev/ttyACM1"),
                                                 Field(&SurveyedNode::obstacle, IsEmpty()))));
  EXPECT_THAT(boards[1].nodes,
              ElementsAre(AllOf(Field(&SurveyedNode::path, "/dev/ttyACM0"),
                                Field(&SurveyedNode::obstacle, "No such file or directory"))));
}

TEST(ObstacleTest, NamesTheReasonAndTheOwner) {
  const PseudoTerminal terminal;
  EXPECT_EQ(obstacleOf(terminal.path()), "");
  ASSERT_EQ(chmod(terminal.path().c_str(), 0), 0);
  const bool wasRoot = geteuid() == 0;
  if (wasRoot) {
    ASSERT_EQ(setresuid(65534, 65534, 0), 0);  // Root may open everything.
  }
  EXPECT_THAT(obstacleOf(terminal.path()),
              AllOf(StartsWith("Permission denied: it belongs to "), EndsWith(", mode 0")));
  if (wasRoot) {
    ASSERT_EQ(setresuid(0, 0, 0), 0);
  }
}

}  // namespace
}  // namespace karvex::device
