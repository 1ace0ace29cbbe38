#include "device/platform/linux/TerminalTermios.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <string>
#include <vector>

namespace karvex::device {
namespace {

/// A terminal with every flag set, or none, and every control character in use.
termios presentWith(tcflag_t flags) {
  termios present{};
  present.c_iflag = present.c_oflag = present.c_cflag = present.c_lflag = flags;
  std::fill(std::begin(present.c_cc), std::end(present.c_cc), cc_t{7});
  cfsetispeed(&present, B9600);
  cfsetospeed(&present, B9600);
  return present;
}

struct Flags {
  tcflag_t cleared;
  tcflag_t set;
};

/// What a setting makes of any flags that were there before.
struct Case {
  std::string what;
  SerialPortSettings settings;
  Flags input{INLCR | IGNCR | ICRNL | IXON | IXOFF | IXANY, 0};
  Flags control{CBAUD | CSIZE | CSTOPB | CRTSCTS, B9600 | CREAD | CLOCAL | CS8};
  Flags output{OPOST, 0};
};

std::vector<Case> cases() {
  std::vector<Case> all = {
      {.what = "raw, 8N1", .settings = {}},
      {.what = "software flow control",
       .settings = {.useSoftwareFlowControl = true},
       .input = {INLCR | IGNCR | ICRNL, IXON | IXOFF | IXANY}},
      {.what = "hardware flow control",
       .settings = {.useHardwareFlowControl = true},
       .control = {CBAUD | CSIZE | CSTOPB, B9600 | CREAD | CLOCAL | CS8 | CRTSCTS}},
      {.what = "two stop bits",
       .settings = {.sendTwoStopBits = true},
       .control = {CBAUD | CSIZE | CRTSCTS, B9600 | CREAD | CLOCAL | CS8 | CSTOPB}},
      {.what = "even parity",
       .settings = {.parityType = ParityType::even},
       .control = {CBAUD | CSIZE | CSTOPB | CRTSCTS, B9600 | CREAD | CLOCAL | CS8 | PARENB}},
      {.what = "odd parity",
       .settings = {.parityType = ParityType::odd},
       .control = {CBAUD | CSIZE | CSTOPB | CRTSCTS, B9600 | CREAD | CLOCAL | CS8 | PARENB | PARODD}},
      {.what = "processed output", .settings = {.processOutput = true}, .output = {0, OPOST}},
  };
  const std::vector<std::pair<DataBitsSize, tcflag_t>> sizes = {{DataBitsSize::bits5, CS5},
                                                                {DataBitsSize::bits6, CS6},
                                                                {DataBitsSize::bits7, CS7},
                                                                {DataBitsSize::bits8, CS8}};
  for (const auto& [size, flag] : sizes) {
    all.push_back({.what = "data bits",
                   .settings = {.dataBitsSize = size},
                   .control = {CBAUD | CSIZE | CSTOPB | CRTSCTS, B9600 | CREAD | CLOCAL | flag}});
  }
  return all;
}

/// The C library's own mark in c_iflag for an input speed of 0, which every other speed takes away.
constexpr tcflag_t inputSpeedMark = 0x80000000;

TEST(TerminalTermiosTest, EachSettingChangesItsFlagsAndLeavesAllOthersAsTheyWere) {
  for (const auto& [what, settings, input, control, output] : cases()) {
    for (const tcflag_t before : {tcflag_t{0}, ~(inputSpeedMark | static_cast<tcflag_t>(CBAUD))}) {
      const termios present = presentWith(before);
      const termios wanted = termiosWith(present, settings);
      EXPECT_EQ(wanted.c_iflag, (present.c_iflag & ~input.cleared) | input.set) << what;
      EXPECT_EQ(wanted.c_cflag, (present.c_cflag & ~control.cleared) | control.set) << what;
      EXPECT_EQ(wanted.c_oflag, (present.c_oflag & ~output.cleared) | output.set) << what;
      EXPECT_EQ(wanted.c_lflag, before & ~static_cast<tcflag_t>(ICANON | ISIG | ECHO | ECHOE)) << what;
    }
  }
}

TEST(TerminalTermiosTest, OfTheControlCharactersOnlyMinimumAndTimeoutStay) {
  const termios wanted = termiosWith(presentWith(0), {.minimumBytesToRead = 255, .timeout = 3});
  for (std::size_t index = 0; index < std::size(wanted.c_cc); ++index) {
    EXPECT_EQ(wanted.c_cc[index], index == VMIN ? 255 : index == VTIME ? 3 : 0) << index;
  }
}

TEST(TerminalTermiosTest, EveryRateIsSetInBothDirections) {
  constexpr std::array<speed_t, baudRateCount> speeds = {
      B0,    B50,   B75,   B110,  B134,   B150,   B200,   B300,    B600,    B1200,
      B1800, B2400, B4800, B9600, B19200, B38400, B57600, B115200, B230400,
  };
  for (std::size_t position = 0; position < speeds.size(); ++position) {
    const auto rate = static_cast<BaudRate>(position);
    const termios wanted = termiosWith(presentWith(0), {.baudRateSetting = BaudRateSetting::bothWays(rate)});
    EXPECT_EQ(cfgetospeed(&wanted), speeds[position]) << speedValue(rate);
    EXPECT_EQ(cfgetispeed(&wanted), speeds[position]) << speedValue(rate);
  }
}

TEST(TerminalTermiosTest, OnlyANodeThatIsAt134AlreadyTakesADetour) {
  struct Expected {
    BaudRate present;
    BaudRate wanted;
    std::vector<speed_t> steps;
  };
  const std::vector<Expected> expectations = {
      {BaudRate::baud9600, BaudRate::baud134, {B134}},
      {BaudRate::baud134, BaudRate::baud134, {B9600, B134}},
      {BaudRate::baud134, BaudRate::baud9600, {B9600}},
      {BaudRate::baud9600, BaudRate::baud9600, {B9600}},
      {BaudRate::baud115200, BaudRate::baud115200, {B115200}},
  };
  for (const auto& [presentRate, wantedRate, speeds] : expectations) {
    const SerialPortSettings settings{.baudRateSetting = BaudRateSetting::bothWays(wantedRate)};
    const termios present = termiosWith(
        presentWith(0), {.baudRateSetting = BaudRateSetting::bothWays(presentRate), .sendTwoStopBits = true});
    const auto steps = termiosSteps(present, settings);
    ASSERT_EQ(steps.size(), speeds.size()) << speedValue(presentRate) << " to " << speedValue(wantedRate);
    for (std::size_t i = 0; i < steps.size(); ++i) {
      EXPECT_EQ(cfgetospeed(&steps[i]), speeds[i]);
      EXPECT_EQ(steps[i].c_cflag & ~static_cast<tcflag_t>(CBAUD),
                termiosWith(present, settings).c_cflag & ~static_cast<tcflag_t>(CBAUD))
          << "the detour differs in its speed alone";
    }
  }
}

}  // namespace
}  // namespace karvex::device
