#include "MIDIKitCore/MIDIOSStatus.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>

namespace midikit::core {
namespace {

struct Row {
  MIDIOSStatus::Named status;
  std::int32_t number;
  const char* text;
};

constexpr Row named[] = {
    {MIDIOSStatus::invalidClient, -10830, "An invalid MIDIClientRef was passed. (kMIDIInvalidClient)"},
    {MIDIOSStatus::invalidPort, -10831, "An invalid MIDIPortRef was passed. (kMIDIInvalidPort)"},
    {MIDIOSStatus::wrongEndpointType, -10832,
     "A source endpoint was passed to a function expecting a destination, or vice versa. "
     "(kMIDIWrongEndpointType)"},
    {MIDIOSStatus::noConnection, -10833, "Attempt to close a non-existent connection. (kMIDINoConnection)"},
    {MIDIOSStatus::unknownEndpoint, -10834, "An invalid MIDIEndpointRef was passed. (kMIDIUnknownEndpoint)"},
    {MIDIOSStatus::unknownProperty, -10835,
     "Attempt to query a property not set on the object. (kMIDIUnknownProperty)"},
    {MIDIOSStatus::wrongPropertyType, -10836,
     "Attempt to set a property with a value not of the correct type. (kMIDIWrongPropertyType)"},
    {MIDIOSStatus::noCurrentSetup, -10837,
     "Internal error; there is no current MIDI setup object. (kMIDINoCurrentSetup)"},
    {MIDIOSStatus::messageSendErr, -10838, "Communication with MIDIServer failed. (kMIDIMessageSendErr)"},
    {MIDIOSStatus::serverStartErr, -10839, "Unable to start MIDIServer. (kMIDIServerStartErr)"},
    {MIDIOSStatus::setupFormatErr, -10840, "Unable to read the saved state. (kMIDISetupFormatErr)"},
    {MIDIOSStatus::wrongThread, -10841,
     "A driver is calling a non-I/O function in the server from a thread other than the server's main "
     "thread. (kMIDIWrongThread)"},
    {MIDIOSStatus::objectNotFound, -10842, "The requested object does not exist. (kMIDIObjectNotFound)"},
    {MIDIOSStatus::idNotUnique, -10843,
     "Attempt to set a non-unique kMIDIPropertyUniqueID on an object. (kMIDIIDNotUnique)"},
    {MIDIOSStatus::notPermitted, -10844,
     "The process does not have privileges for the requested operation. (kMIDINotPermitted)"},
    {MIDIOSStatus::unknownError, -10845,
     "Internal error; unable to perform the requested operation. (kMIDIUnknownError)"},
    {MIDIOSStatus::ioError, 7, "I/O Error. (kMIDIMsgIOError)"},
    {MIDIOSStatus::internalError, -50, "Internal OSStatus error -50."},
};

TEST(MIDIOSStatus, NamedStatusesHaveTheirNumbersAndTexts) {
  for (const auto& row : named) {
    const MIDIOSStatus status = row.status;
    EXPECT_EQ(status.number(), row.number);
    EXPECT_EQ(status.text(), row.text);
    EXPECT_TRUE(MIDIOSStatus::fromNumber(row.number) == row.status) << row.number;
  }
}

TEST(MIDIOSStatus, EveryOtherNumberBecomesOther) {
  const auto check = [](std::int32_t number) {
    const auto status = MIDIOSStatus::fromNumber(number);
    EXPECT_EQ(status.number(), number);
    const bool isNamed = std::ranges::find(named, number, &Row::number) != std::end(named);
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
