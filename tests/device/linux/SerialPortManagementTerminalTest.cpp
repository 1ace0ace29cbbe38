// The steps before programming on a pseudo-terminal: what a board and other programs notice of them.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <termios.h>
#include <unistd.h>

#include <string>
#include <string_view>

#include "device/SerialPortManagement.hpp"
#include "device/platform/linux/TermiosTerminalNodes.hpp"
#include "foundation/Log.hpp"
#include "foundation/SystemRuntime.hpp"
#include "tests/device/linux/PseudoTerminal.hpp"

namespace karvex::device {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SerialPortManagementTerminalTest : public testing::Test {
 protected:
  SerialPortManagementTerminalTest() {
    foundation::log::redirectSystem([](std::string_view) {});
    terminal.readPackets();
  }
  ~SerialPortManagementTerminalTest() override { foundation::log::redirectSystem(nullptr); }

  PseudoTerminal terminal;
  foundation::SystemRuntime runtime;
  TermiosTerminalNodes nodes{runtime.globalQueue()};
  SerialPortManagement management{nodes, runtime};
};

TEST_F(SerialPortManagementTerminalTest, TheRequestIsAnOpenAChangeTo134BaudAndAClose) {
  for (int round = 0; round < 2; ++round) {  // The second time, the node is at 134 baud already.
    EXPECT_TRUE(management.checkPortAvailability({}, terminal.path()));
    EXPECT_THAT(terminal.packets(), IsEmpty());
    EXPECT_TRUE(management.requestHalfkayMode(terminal.path()));
    EXPECT_THAT(terminal.packets(), ElementsAre("line")) << "and no byte";
    const termios line = terminal.settings();
    EXPECT_EQ(cfgetispeed(&line), static_cast<speed_t>(B134));
    EXPECT_EQ(cfgetospeed(&line), static_cast<speed_t>(B134));
    EXPECT_EQ(line.c_cflag & (CSIZE | PARENB | CSTOPB | CRTSCTS), static_cast<tcflag_t>(CS8));
  }
}

TEST_F(SerialPortManagementTerminalTest, APortThatAnotherProgramHasGetsNoRequestUntilItIsFree) {
  {
    const OtherProgram other(
        [this] { ::flock(::open(terminal.path().c_str(), O_RDWR | O_NOCTTY), LOCK_EX); });
    EXPECT_FALSE(management.checkPortAvailability({}, terminal.path()));
    EXPECT_TRUE(management.portBusyError.get());
    EXPECT_FALSE(management.requestHalfkayMode(terminal.path()));
    EXPECT_THAT(management.errorText.get(),
                testing::HasSubstr("(process " + std::to_string(other.process()) + ")"));
    EXPECT_THAT(terminal.packets(), IsEmpty());
  }
  EXPECT_TRUE(management.checkPortAvailability({}, terminal.path()));
  EXPECT_TRUE(management.requestHalfkayMode(terminal.path()));
  EXPECT_THAT(terminal.packets(), ElementsAre("line"));
}

}  // namespace
}  // namespace karvex::device
