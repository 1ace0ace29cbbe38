#include "rig/VirtualTerminals.hpp"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "device/SerialPortManagement.hpp"
#include "foundation/run/VirtualRuntime.hpp"

namespace karvex::rig {
namespace {

using namespace std::chrono_literals;
using device::PortMode;
using device::TerminalRefusal;
using testing::IsEmpty;

using Node = std::unique_ptr<device::TerminalNode>;

const TerminalRefusal absent{.cause = TerminalRefusal::Cause::absent};

TerminalRefusal inUseBy(const std::string& program) {
  return {.cause = TerminalRefusal::Cause::inUse, .detail = program};
}

class VirtualTerminalsTest : public testing::Test {
 protected:
  VirtualTerminalsTest() {
    auto board = std::make_unique<VirtualBoard>(*findBoardKind("TEENSYLC"), "1234");
    board->setEventListener([this](auto, const std::string& event) { seen.push_back(event); });
    bus.plugIn(std::move(board));
  }

  Node openNode() { return std::get<Node>(terminals.open(port, PortMode::receive)); }

  /// Why it can't be opened; nothing if it can, and then it is closed again.
  std::optional<TerminalRefusal> refusalOf(const std::string& path) {
    auto opened = terminals.open(path, PortMode::receiveAndTransmit);
    const auto* refusal = std::get_if<TerminalRefusal>(&opened);
    return refusal != nullptr ? std::optional(*refusal) : std::nullopt;
  }

  /// Into the bootloader and, by a boot report, back into the firmware.
  void makeABoardsRound() {
    bus.setLineSpeed("1234", 134);
    runtime.clock().sleepFor(VirtualBoard::usualSwitchTime);
    std::vector<std::uint8_t> boot(findBoardKind("TEENSYLC")->reportLength(), 0xFF);
    EXPECT_EQ(bus.sendReport(bus.firstHalfKayBoard().value(), boot), ReportOutcome::accepted);
    runtime.clock().sleepFor(VirtualBoard::usualBootTime);
  }

  const std::string port = "/dev/cu.usbmodem12341";
  const device::SerialPortSettings request{.baudRateSetting =
                                               device::BaudRateSetting::bothWays(device::BaudRate::baud134)};
  foundation::VirtualRuntime runtime;
  VirtualBus bus{runtime.clock()};
  VirtualTerminals terminals{bus};
  std::vector<std::string> seen;  ///< by the board
};

TEST_F(VirtualTerminalsTest, OnlyTheNameOfARunningBoardsPortLeadsToOne) {
  EXPECT_EQ(refusalOf(port), std::nullopt);
  for (const auto* path : {"/dev/cu.usbmodem12342", "/dev/cu.usbmodem99991", "/dev/ttyACM0", ""}) {
    EXPECT_EQ(refusalOf(path), absent) << path;
  }
  bus.setLineSpeed("1234", 134);
  EXPECT_EQ(refusalOf(port), absent) << "on its way";
  runtime.clock().sleepFor(VirtualBoard::usualSwitchTime);
  EXPECT_EQ(refusalOf(port), absent) << "in its bootloader";
}

TEST_F(VirtualTerminalsTest, APortHasOneOpenerAndAProgramThatWaitsForItIsTheNext) {
  auto node = openNode();
  EXPECT_EQ(refusalOf(port), inUseBy("this program"));
  node.reset();
  EXPECT_EQ(refusalOf(port), std::nullopt);
  terminals.occupyBehindUse("1234", "minicom");
  node = openNode();
  node.reset();
  EXPECT_EQ(refusalOf(port), inUseBy("minicom"));
  terminals.vacate("1234");
  EXPECT_EQ(refusalOf(port), std::nullopt);
  EXPECT_EQ(refusalOf(port), std::nullopt) << "it comes once";
  node = openNode();
  node->leaveOpen();
  node.reset();
  EXPECT_EQ(refusalOf(port), inUseBy("this program"));
}

TEST_F(VirtualTerminalsTest, ANodeOutlivesItsPortWithoutADeviceEvenWhenTheBoardIsBack) {
  auto node = openNode();
  EXPECT_TRUE(node->isConnected());
  EXPECT_EQ(node->write(std::vector<std::uint8_t>(3)), 3);
  node->configure({});
  EXPECT_THAT(seen, IsEmpty()) << "only the speed means something to the board";
  makeABoardsRound();
  ASSERT_TRUE(bus.isPresent("usbmodem12341"));
  seen.clear();
  EXPECT_FALSE(node->isConnected());
  EXPECT_EQ(node->write(std::vector<std::uint8_t>(3)), -1);
  node->configure(request);
  EXPECT_THAT(seen, IsEmpty());
  EXPECT_EQ(refusalOf(port), std::nullopt) << "the board's new port is free";
}

}  // namespace
}  // namespace karvex::rig
