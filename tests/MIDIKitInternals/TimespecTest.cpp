#include "MIDIKitInternals/Timespec.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <limits>

namespace midikit::internals {
namespace {

TEST(Timespec, SumsAndDifferencesCarryAtOneSecond) {
  constexpr auto sum = [](Timespec a, Timespec b) { return a + b; };
  static_assert(sum({1, 999'999'999}, {2, 1}) == Timespec{4, 0});
  static_assert(sum({1, 999'999'998}, {2, 1}) == Timespec{3, 999'999'999});
  static_assert(sum({0, 999'999'999}, {0, 999'999'999}) == Timespec{1, 999'999'998});
  constexpr auto difference = [](Timespec a, Timespec b) { return a - b; };
  static_assert(difference({4, 0}, {2, 1}) == Timespec{1, 999'999'999});
  static_assert(difference({4, 5}, {4, 5}) == Timespec{});
  static_assert(difference({0, 0}, {0, 250'000'000}) == Timespec{-1, 750'000'000});
  static_assert(difference({0, 0}, {0, 250'000'000}) < Timespec{});
}

TEST(Timespec, SecondsAreCutOffBehindTheNanosecond) {
  EXPECT_EQ(Timespec::fromSeconds(0), (Timespec{0, 0}));
  EXPECT_EQ(Timespec::fromSeconds(1.5), (Timespec{1, 500'000'000}));
  EXPECT_EQ(Timespec::fromSeconds(1.9e-9), (Timespec{0, 1}));
  EXPECT_EQ(Timespec::fromSeconds(-0.25), (Timespec{-1, 750'000'000}));
  EXPECT_EQ(Timespec::fromSeconds(-2), (Timespec{-2, 0}));
  EXPECT_EQ(Timespec::fromSeconds(9e9), (Timespec{9'000'000'000, 0}));
}

TEST(TimespecDeathTest, SecondsWithoutRoomStopTheProgram) {
  const auto aborted = testing::KilledBySignal(SIGABRT);
  EXPECT_EXIT(Timespec::fromSeconds(1e10), aborted, "Overflow");
  EXPECT_EXIT(Timespec::fromSeconds(std::numeric_limits<double>::quiet_NaN()), aborted, "Overflow");
  EXPECT_EXIT(Timespec::fromSeconds(-1e10), aborted, "Underflow");
}

TEST(Timespec, NowIsARealClockThatNeverGoesBack) {
  const auto first = Timespec::now();
  const auto second = Timespec::now();
  EXPECT_LE(first, second);
  EXPECT_GT(first, Timespec{});
  EXPECT_GE(first.nanoseconds, 0);
  EXPECT_LT(first.nanoseconds, Timespec::nanosecondsPerSecond);
}

}  // namespace
}  // namespace midikit::internals
