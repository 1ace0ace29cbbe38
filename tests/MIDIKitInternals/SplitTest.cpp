#include "MIDIKitInternals/Split.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <numeric>
#include <string_view>
#include <vector>

#include "MIDIKitInternals/Clamped.hpp"

namespace midikit::internals {
namespace {

TEST(Split, PiecesFollowOneAnotherAndOnlyTheLastIsShorter) {
  for (std::size_t size = 0; size <= 20; ++size) {
    std::vector<int> numbers(size);
    std::iota(numbers.begin(), numbers.end(), 0);
    for (std::size_t count = 1; count <= 21; ++count) {
      std::vector<int> joined;
      const auto pieces = split(numbers, count);
      for (const auto& piece : pieces) {
        EXPECT_EQ(piece.size(), std::min(count, size - joined.size()));
        joined.insert(joined.end(), piece.begin(), piece.end());
      }
      EXPECT_EQ(joined, numbers);
      EXPECT_EQ(pieces.size(), (size + count - 1) / count);
    }
  }
}

TEST(Split, PiecesAreViewsOfTheCollection) {
  std::vector<int> numbers{1, 2, 3};
  split(numbers, 2)[1][0] = 7;
  EXPECT_EQ(numbers, (std::vector<int>{1, 2, 7}));
  EXPECT_EQ(split(std::string_view("abc"), 2)[1].front(), 'c');
}

TEST(SplitDeathTest, PiecesOfNothingStopTheProgram) {
  std::vector<int> numbers;
  EXPECT_EXIT((void)split(numbers, 0), testing::KilledBySignal(SIGABRT), "DivideByZero");
}

TEST(Clamped, LimitsToTheClosedRange) {
  static_assert(clamped(-1, 0, 127) == 0 && clamped(0, 0, 127) == 0 && clamped(64, 0, 127) == 64);
  static_assert(clamped(127, 0, 127) == 127 && clamped(128, 0, 127) == 127 && clamped(5, 3, 3) == 3);
}

}  // namespace
}  // namespace midikit::internals
