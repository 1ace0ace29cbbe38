#include "MIDIKitInternals/MIDIKitInternalError.hpp"

#include <gtest/gtest.h>

namespace midikit::internals {
namespace {

TEST(MIDIKitInternalError, PrintsAndComparesItsPayload) {
  const auto error = MIDIKitInternalError::malformed("Data is too large");
  EXPECT_STREQ(error.what(), "Malformed: Data is too large");
  EXPECT_TRUE(error == MIDIKitInternalError::malformed("Data is too large"));
  EXPECT_FALSE(error == MIDIKitInternalError::malformed(""));
}

}  // namespace
}  // namespace midikit::internals
