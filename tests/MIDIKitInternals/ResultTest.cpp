#include "MIDIKitInternals/Result.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <string>
#include <type_traits>

namespace midikit::internals {
namespace {

enum class Fault { odd, negative };

constexpr Result<int, Fault> halved(int number) {
  if (number < 0) {
    return Fault::negative;
  }
  if (number % 2 != 0) {
    return Fault::odd;
  }
  return number / 2;
}

TEST(Result, HoldsEitherTheValueOrTheErrorAlsoAtCompileTime) {
  static_assert(halved(8) && *halved(8) == 4);
  static_assert(!halved(7) && halved(7).error() == Fault::odd);
  static_assert(halved(8) == halved(8) && halved(8) != halved(6) && halved(7) != halved(-1));
  static_assert(!std::is_convertible_v<Result<int, Fault>, bool>);
}

TEST(Result, GivesAwayAValueThatOnlyMoves) {
  Result<std::unique_ptr<std::string>, Fault> made(std::make_unique<std::string>("text"));
  EXPECT_EQ((*made)->size(), 4U);
  const std::unique_ptr<std::string> taken = *std::move(made);
  EXPECT_EQ(*taken, "text");
}

TEST(ResultDeathTest, AskingForWhatIsNotThereStopsTheProgram) {
  EXPECT_EXIT((void)halved(7).value(), testing::KilledBySignal(SIGABRT), "");
  EXPECT_EXIT((void)halved(8).error(), testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
}  // namespace midikit::internals
