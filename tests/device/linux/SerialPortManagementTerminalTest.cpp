// The steps before programming on a pseudo-terminal: what a board and other programs notice of them.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "device/SerialPortManagement.hpp"
#include "device/platform/linux/TermiosTerminalNodes.hpp"
#include "foundation/Log.hpp"
#include "foundation/SystemRuntime.hpp"
#include "tests/device/linux/PseudoTerminal.hpp"

namespace karvex::device {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// What is done to a node through the file system, by any program, from its construction on.
class NodeWatch {
 public:
  explicit NodeWatch(const std::string& path) : events_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (::inotify_add_watch(events_, path.c_str(), IN_OPEN | IN_ACCESS | IN_MODIFY | IN_CLOSE) < 0) {
      throw std::system_error(errno, std::generic_category());
    }
  }
  ~NodeWatch() { ::close(events_); }
  NodeWatch(const NodeWatch&) = delete;
  NodeWatch& operator=(const NodeWatch&) = delete;

  /// Since the last call: "open", "read", "write", "close".
  std::vector<std::string> events() const {
    std::vector<std::string> all;
    std::array<char, 4096> block{};
    const auto length = ::read(events_, block.data(), block.size());
    for (auto at = block.begin(); at - block.begin() < length; at += sizeof(inotify_event)) {
      inotify_event event{};  // Of a node, so without a name behind it.
      std::memcpy(&event, &*at, sizeof event);
      all.push_back(nameOf(event.mask));
    }
    return all;
  }

 private:
  static std::string nameOf(std::uint32_t mask) {
    const std::vector<std::pair<std::uint32_t, const char*>> names = {
        {IN_OPEN, "open"}, {IN_ACCESS, "read"}, {IN_MODIFY, "write"}, {IN_CLOSE, "close"}};
    for (const auto& [bit, name] : names) {
      if ((mask & bit) != 0) {
        return name;
      }
    }
    return "event " + std::to_string(mask);
  }

  int events_;
};

class SerialPortManagementTerminalTest : public testing::Test {
 protected:
  SerialPortManagementTerminalTest() {
    foundation::log::redirectSystem([](std::string_view) {});
    terminal.readPackets();
  }
  ~SerialPortManagementTerminalTest() override { foundation::log::redirectSystem(nullptr); }

  PseudoTerminal terminal;
  NodeWatch watch{terminal.path()};
  foundation::SystemRuntime runtime;
  TermiosTerminalNodes nodes{runtime.globalQueue()};
  SerialPortManagement management{nodes, runtime};
};

TEST_F(SerialPortManagementTerminalTest, TheCheckIsAnOpenAndAClose) {
  EXPECT_TRUE(management.checkPortAvailability({}, terminal.path()));
  EXPECT_THAT(watch.events(), ElementsAre("open", "close"));
  EXPECT_THAT(terminal.packets(), IsEmpty());
}

TEST_F(SerialPortManagementTerminalTest, TheRequestIsAnOpenAChangeTo134BaudAndAClose) {
  for (int round = 0; round < 2; ++round) {  // The second time, the node is at 134 baud already.
    EXPECT_TRUE(management.requestHalfkayMode(terminal.path()));
    EXPECT_THAT(watch.events(), ElementsAre("open", "close")) << "nothing written, nothing read";
    EXPECT_THAT(terminal.packets(), ElementsAre("line"));
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
