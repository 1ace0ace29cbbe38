#include "MIDIKitInternals/Exception.hpp"

#include <gtest/gtest.h>

#include <csignal>

namespace midikit::internals {
namespace {

TEST(ExceptionDeathTest, RaisingPrintsKindAndReasonAndAborts) {
  const auto aborted = testing::KilledBySignal(SIGABRT);
  EXPECT_EXIT(raise(Exception::overflow, "UInt7 integer overflowed"), aborted,
              "^NSDecimalNumberOverflowException: UInt7 integer overflowed\n$");
  EXPECT_EXIT(raise(Exception::underflow, "too low"), aborted,
              "^NSDecimalNumberUnderflowException: too low\n$");
  EXPECT_EXIT(raise(Exception::divisionByZero, ""), aborted, "^NSDecimalNumberDivideByZeroException: \n$");
}

}  // namespace
}  // namespace midikit::internals
