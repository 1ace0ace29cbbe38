// What a diagnosis sees of a board with a serial interface, and where its port leads, on a real bus with real
// nodes.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "device/platform/linux/SysfsSerialInterfaces.hpp"
#include "device/platform/linux/UdevBoardSurvey.hpp"
#include "tests/kernel/UsbBoard.hpp"

namespace karvex::device {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

template <typename Condition>
bool comesTrue(const Condition& condition) {
  for (int tries = 0; tries < 3000 && !condition(); ++tries) {
    std::this_thread::sleep_for(10ms);
  }
  return condition();
}

TEST(BoardSurveyTest, ABoardIsShownWithItsPortForAsLongAsItIsThere) {
  if (!tests::UsbBoard::isPossible()) {
    GTEST_SKIP() << "This kernel plays no USB devices; tests/kernel/run brings one up that does.";
  }
  const tests::UsbBoard board(
      {.serialNumber = "1234", .vendorId = "0x16c0", .productId = "0x0489", .function = "acm.usb0"});
  board.plugIn();
  const char* node = "/dev/ttyACM0";
  ASSERT_TRUE(comesTrue([&] { return ::access(node, R_OK | W_OK) == 0; }));
  EXPECT_TRUE(SysfsSerialInterfaces().isPresent("usbmodem12341"));
  const auto surveyed = [&] {
    const auto boards = UdevBoardSurvey().boards();
    EXPECT_EQ(boards.size(), 1U);
    EXPECT_EQ(boards.at(0).device.serialNumber, "1234");
    EXPECT_EQ(boards.at(0).nodes.size(), 1U);
    return boards.at(0).nodes.at(0);
  };
  EXPECT_EQ(surveyed().path, node);
  EXPECT_EQ(surveyed().obstacle, "");
  EXPECT_EQ(surveyed().holders, "") << "nobody, and the survey opens nothing";
  const int descriptor = ::open(node, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  ASSERT_GE(descriptor, 0);
  EXPECT_THAT(surveyed().holders, HasSubstr(std::to_string(::getpid())));
  ::close(descriptor);
  ASSERT_EQ(::setresuid(65534, 65534, 0), 0);
  EXPECT_THAT(surveyed().obstacle, HasSubstr("Permission denied: it belongs to "));
  ASSERT_EQ(::setresuid(0, 0, 0), 0);
  board.unplug();
  EXPECT_TRUE(comesTrue([] { return UdevBoardSurvey().boards().empty(); }));
  EXPECT_FALSE(SysfsSerialInterfaces().isPresent("usbmodem12341"));
}

}  // namespace
}  // namespace karvex::device
