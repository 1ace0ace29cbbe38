#include "MIDIKitCore/MIDIIOError.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <exception>
#include <type_traits>

namespace midikit::core {
namespace {

TEST(MIDIIOError, EveryCaseHasAnIdentityAndATextWithItsPayload) {
  const struct {
    MIDIIOError error;
    const char* text;
  } rows[] = {{MIDIIOError::internalInconsistency("a"), "Internal inconsistency: a"},
              {MIDIIOError::malformed("a"), "Malformed: a"},
              {MIDIIOError::malformed(""), "Malformed: "},
              {MIDIIOError::notSupported("a"), "Not Supported: a"},
              {MIDIIOError::connectionError("a"), "Connection Error: a"},
              {MIDIIOError::readError("a"), "Read Error: a"},
              {MIDIIOError::osStatus(7), "I/O Error. (kMIDIMsgIOError)"},
              {MIDIIOError::osStatus(12), "Unknown OSStatus error: 12"}};
  for (const auto& row : rows) {
    EXPECT_STREQ(row.error.what(), row.text);
    for (const auto& other : rows) {
      EXPECT_EQ(row.error == other.error, &row == &other) << row.text << " / " << other.text;
    }
  }
  EXPECT_TRUE(MIDIIOError::osStatus(7) == MIDIIOError::osStatus(MIDIOSStatus::ioError));
}

// Else an error on its way to its handler could end the program.
static_assert(std::is_nothrow_copy_constructible_v<MIDIIOError> &&
              std::is_nothrow_copy_assignable_v<MIDIIOError>);

TEST(MIDIIOError, ACheckedStatusThrowsUnlessItIsZero) {
  EXPECT_NO_THROW(checkStatus(0));
  for (const std::int32_t number : {1, 7, -50, -10844}) {
    try {
      checkStatus(number);
      FAIL() << number;
    } catch (const std::exception& thrown) {
      const auto* error = dynamic_cast<const MIDIIOError*>(&thrown);
      ASSERT_NE(error, nullptr);
      EXPECT_TRUE(*error == MIDIIOError::osStatus(number)) << thrown.what();
    }
  }
}

}  // namespace
}  // namespace midikit::core
