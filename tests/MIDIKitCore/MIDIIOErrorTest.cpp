#include "MIDIKitCore/MIDIIOError.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <type_traits>
#include <vector>

namespace midikit::core {
namespace {

TEST(MIDIIOError, TextsNameTheKindAndThePayload) {
  EXPECT_STREQ(MIDIIOError::internalInconsistency("a").what(), "Internal inconsistency: a");
  EXPECT_STREQ(MIDIIOError::malformed("").what(), "Malformed: ");
  EXPECT_STREQ(MIDIIOError::notSupported("a").what(), "Not Supported: a");
  EXPECT_STREQ(MIDIIOError::connectionError("a").what(), "Connection Error: a");
  EXPECT_STREQ(MIDIIOError::readError("a").what(), "Read Error: a");
  EXPECT_STREQ(MIDIIOError::osStatus(MIDIOSStatus::invalidPort).what(),
               "An invalid MIDIPortRef was passed. (kMIDIInvalidPort)");
  EXPECT_STREQ(MIDIIOError::osStatus(12).what(), "Unknown OSStatus error: 12");
}

TEST(MIDIIOError, IsEqualOnlyWithTheSameCaseAndPayload) {
  const std::vector<MIDIIOError> different{MIDIIOError::internalInconsistency("a"),
                                           MIDIIOError::malformed("a"),
                                           MIDIIOError::notSupported("a"),
                                           MIDIIOError::connectionError("a"),
                                           MIDIIOError::readError("a"),
                                           MIDIIOError::readError("b"),
                                           MIDIIOError::osStatus(7),
                                           MIDIIOError::osStatus(8)};
  for (std::size_t a = 0; a < different.size(); ++a) {
    for (std::size_t b = 0; b < different.size(); ++b) {
      EXPECT_EQ(different[a] == different[b], a == b) << different[a].what() << " / " << different[b].what();
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
