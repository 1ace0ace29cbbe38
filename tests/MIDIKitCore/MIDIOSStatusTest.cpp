#include "MIDIKitCore/MIDIOSStatus.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>

#include "tests/MIDIKitCore/Events.hpp"

namespace midikit::core {
namespace {

using Status = MIDIOSStatus;

// In the order of their numbers, which go from -10830 down.
constexpr std::array consecutive{
    Status::invalidClient,   Status::invalidPort,     Status::wrongEndpointType, Status::noConnection,
    Status::unknownEndpoint, Status::unknownProperty, Status::wrongPropertyType, Status::noCurrentSetup,
    Status::messageSendErr,  Status::serverStartErr,  Status::setupFormatErr,    Status::wrongThread,
    Status::objectNotFound,  Status::idNotUnique,     Status::notPermitted,      Status::unknownError};

TEST(MIDIOSStatus, NamedStatusesHaveTheirNumbersAndTexts) {
  std::string texts;
  const auto expect = [&texts](Status::Named named, std::int32_t number) {
    EXPECT_EQ(Status(named).number(), number);
    EXPECT_TRUE(Status::fromNumber(number) == named) << number;
    texts.append(Status(named).text()).append("\n");
  };
  std::int32_t next = -10830;
  for (const auto named : consecutive) {
    expect(named, next--);
  }
  expect(Status::ioError, 7);
  expect(Status::internalError, -50);
  EXPECT_EQ(digestOf(texts), 1476005632109024597U) << texts;
  EXPECT_EQ(Status(Status::invalidPort).text(), "An invalid MIDIPortRef was passed. (kMIDIInvalidPort)");
  EXPECT_EQ(Status(Status::ioError).text(), "I/O Error. (kMIDIMsgIOError)");
  EXPECT_EQ(Status(Status::internalError).text(), "Internal OSStatus error -50.");
}

TEST(MIDIOSStatus, EveryOtherNumberBecomesOther) {
  const auto check = [](std::int32_t number) {
    const auto status = MIDIOSStatus::fromNumber(number);
    EXPECT_EQ(status.number(), number);
    const bool isNamed = (number <= -10830 && number >= -10845) || number == 7 || number == -50;
    EXPECT_EQ(status.named().has_value(), isNamed) << number;
    EXPECT_EQ(status == MIDIOSStatus::other(number), !isNamed) << number;
  };
  for (std::int32_t number = -11000; number <= 11000; ++number) {
    check(number);
  }
  check(std::numeric_limits<std::int32_t>::min());
  check(std::numeric_limits<std::int32_t>::max());
  EXPECT_EQ(MIDIOSStatus::fromNumber(-10829).text(), "Unknown OSStatus error: -10829");
  EXPECT_EQ(MIDIOSStatus::fromNumber(0).text(), "Unknown OSStatus error: 0");
  EXPECT_FALSE(MIDIOSStatus::other(12) == MIDIOSStatus::other(13));
}

}  // namespace
}  // namespace midikit::core
