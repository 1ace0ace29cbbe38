#include "device/SerialPortManagement.hpp"

#include <gmock/gmock.h>

#include <memory>
#include <vector>

#include "device/SerialPortError.hpp"
#include "foundation/Log.hpp"
#include "foundation/VirtualRuntime.hpp"

namespace karvex::device {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A node that writes down what is done to it, on a platform that can refuse to open it.
class RecordingNodes final : public TerminalNodes {
 public:
  class Node final : public TerminalNode {
   public:
    Node(std::vector<std::string>& events, bool failsToConfigure)
        : events_(events), failsToConfigure_(failsToConfigure) {}
    ~Node() override { events_.emplace_back("close"); }
    void configure(const SerialPortSettings& settings) override {
      if (failsToConfigure_) {
        throw PortException(PortError::mustBeOpen, "not open");
      }
      const SerialPortSettings request{.baudRateSetting = BaudRateSetting::bothWays(BaudRate::baud134)};
      events_.emplace_back(settings == request ? "134 baud, 8N1, raw" : "other settings");
    }
    std::ptrdiff_t read(std::span<std::uint8_t>) override {
      events_.emplace_back("read");
      return 0;
    }
    std::ptrdiff_t write(std::span<const std::uint8_t>) override {
      events_.emplace_back("write");
      return 0;
    }
    bool isConnected() override { return true; }
    std::unique_ptr<ReadSource> watch(ReadSource::Handler) override { return std::make_unique<ReadSource>(); }
    void leaveOpen() override { events_.emplace_back("left open"); }

   private:
    std::vector<std::string>& events_;
    const bool failsToConfigure_;
  };

  OpenedTerminal open(const std::string& path, PortMode mode) override {
    if (refuses) {
      return TerminalRefusal{.cause = TerminalRefusal::Cause::inUse, .detail = "minicom (process 4711)"};
    }
    events.push_back("open " + path + " " + std::to_string(static_cast<int>(mode)));
    return std::make_unique<Node>(events, failsToConfigure);
  }

  bool refuses = false;
  bool failsToConfigure = false;
  std::vector<std::string> events;
};

class SerialPortManagementTest : public testing::Test {
 protected:
  SerialPortManagementTest() {
    foundation::log::redirectSystem([this](std::string_view line) { logged.emplace_back(line); });
  }
  ~SerialPortManagementTest() override { foundation::log::redirectSystem(nullptr); }

  std::vector<bool> flags() const {
    return {management.halfkayModeDetected.get(), management.portBusyError.get(),
            management.showErrorModal.get()};
  }

  const std::string port = "/dev/cu.usbmodem12341";
  foundation::VirtualRuntime runtime;
  RecordingNodes nodes;
  SerialPortManagement management{nodes, runtime};
  records::BootableDevice device;
  std::vector<std::string> logged;
};

TEST_F(SerialPortManagementTest, AFreePortIsOpenedAndClosedAndNothingElse) {
  EXPECT_TRUE(management.checkPortAvailability(device, port));
  EXPECT_THAT(nodes.events, ElementsAre("open " + port + " 2", "close"));
  EXPECT_THAT(logged, ElementsAre("> KARVEX : Checking serial port availablity for port : " + port,
                                  "> KARVEX Serial port opened succesfully"));
  EXPECT_THAT(flags(), ElementsAre(false, false, false));
}

TEST_F(SerialPortManagementTest, ABusyPortSetsItsFlagsAndSaysWhoHasIt) {
  nodes.refuses = true;
  EXPECT_FALSE(management.checkPortAvailability(device, port));
  EXPECT_FALSE(management.checkPortAvailability(device, port));
  EXPECT_THAT(flags(), ElementsAre(false, true, true)) << "set, not inverted";
  EXPECT_THAT(management.errorText.get(), testing::HasSubstr("minicom (process 4711)"));
  EXPECT_EQ(logged.back(), "> KARVEX : Error opening or closing serial port " + management.errorText.get());
}

TEST_F(SerialPortManagementTest, ADeviceInItsBootloaderTouchesNoPort) {
  device.USBProductId = 0x0478;
  EXPECT_FALSE(management.checkPortAvailability(device, port));
  EXPECT_THAT(nodes.events, IsEmpty());
  EXPECT_THAT(logged, ElementsAre("> KARVEX : Already in Halfkay mode... abort!"));
  EXPECT_THAT(flags(), ElementsAre(true, false, false));
}

TEST_F(SerialPortManagementTest, TheRequestIsOneChangeOfSpeedAndNoByte) {
  EXPECT_TRUE(management.requestHalfkayMode(port));
  EXPECT_THAT(nodes.events, ElementsAre("open " + port + " 0", "134 baud, 8N1, raw", "close"));
  EXPECT_THAT(logged, ElementsAre("> KARVEX : Serial port is fully available!",
                                  "> KARVEX : Attempting to open serial port " + port,
                                  "> KARVEX : Serial port " + port + " open success!",
                                  "> KARVEX : Halfkay mode request Sent on port " + port));
  EXPECT_THAT(flags(), ElementsAre(false, false, false));
}

TEST_F(SerialPortManagementTest, ARequestThatFailsTwiceLeavesTheFlagAsItWas) {
  nodes.refuses = true;
  EXPECT_FALSE(management.requestHalfkayMode(port));
  EXPECT_THAT(flags(), ElementsAre(false, false, true));
  const auto text = management.errorText.get();
  EXPECT_EQ(logged.back(), "> KARVEX : Could not open serial port " + port + " : Reason => " + text);
  EXPECT_FALSE(management.requestHalfkayMode(port));
  EXPECT_THAT(flags(), ElementsAre(false, false, false));
  EXPECT_EQ(management.errorText.get(), text);
}

TEST_F(SerialPortManagementTest, ALineThatCannotBeSetFailsTheRequestAndLeavesNothingOpen) {
  nodes.failsToConfigure = true;
  EXPECT_FALSE(management.requestHalfkayMode(port));
  EXPECT_THAT(nodes.events, ElementsAre("open " + port + " 0", "close"));
  EXPECT_EQ(logged.back(), "> KARVEX : Halfkay mode request failed : Reason : not open");
  EXPECT_EQ(management.errorText.get(), "not open");
  EXPECT_THAT(flags(), ElementsAre(false, false, true));
}

}  // namespace
}  // namespace karvex::device
