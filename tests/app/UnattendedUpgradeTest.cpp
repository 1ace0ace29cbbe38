#include "app/UnattendedUpgrade.hpp"

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/ui/UiBench.hpp"

namespace karvex::app {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

/// A rig of two boards as the core.
class Bench final : public ui::UiBench, public ApplicationCore {
 public:
  void TestBody() override {}
  foundation::Runtime& runtime() override { return UiBench::runtime; }
  ui::ContentView& view() override { return UiBench::view; }
  ui::Actions& actions() override { return UiBench::actions; }
  using UiBench::misbehave;
  using UiBench::rig;
};

TEST(UnattendedUpgradeTest, EndsWithWhatBecameOfEachDevice) {
  const std::string first = serialNumberOf(0);
  const std::string second = serialNumberOf(1);
  const auto isUpgraded = [](const std::string& serialNumber) {
    return Contains(AllOf(HasSubstr("#" + serialNumber), testing::EndsWith(": upgraded.")));
  };
  const auto isNot = [](const std::string& serialNumber, const std::string& end) {
    return Contains(AllOf(HasSubstr("#" + serialNumber), testing::EndsWith(": NOT UPGRADED" + end)));
  };
  const struct {
    const char* description;
    ScriptedUser::Plan plan;
    std::function<void(Bench&)> prepare;
    testing::Matcher<std::vector<std::string>> lines;
    const char* lastLine;
    ExitStatus status;
  } cases[] = {
      {"all of them",
       {},
       [](auto&) {},
       AllOf(isUpgraded(first), isUpgraded(second)),
       "2 of 2 devices upgraded.",
       exitLoaded},
      {"from the second on",
       {.firstRow = 1},
       [](auto&) {},
       AllOf(Not(isUpgraded(first)), isUpgraded(second)),
       "1 of 1 devices upgraded.",
       exitLoaded},
      {"no such row",
       {.firstRow = 2},
       [](auto&) {},
       Not(Contains(HasSubstr("UPGRADED"))),
       "There is no row 3.",
       exitLoadFailed},
      {"no list",
       {},
       [](auto& bench) { bench.misbehave("missing-key=mcu"); },
       testing::_,
       "There is no device to upgrade.",
       exitLoadFailed},
      {"the refresh after an answered alert doesn't undo what was done",
       {.answersAlerts = true},
       [&](auto& bench) { bench.rig.terminals.occupy(second, "minicom"); },
       AllOf(isUpgraded(first), isNot(second, "."), Contains("OK")),
       "1 of 2 devices upgraded.",
       exitLoadFailed},
      {"an alert without an answer",
       {},
       [&](auto& bench) { bench.rig.terminals.occupy(first, "minicom"); },
       AllOf(isNot(first, "."), isNot(second, ": not begun."), Not(Contains("OK"))),
       "0 of 2 devices upgraded.",
       exitLoadFailed},
      {"a board that may not be opened",
       {},
       [&](auto& bench) {
         bench.rig.bus.inspect(first, [](auto& board) { board.setFaults({.deniesAccess = true}); });
       },
       AllOf(isNot(first, ": Permission denied."), isNot(second, ": not begun.")),
       "0 of 2 devices upgraded.",
       exitLoadFailed},
  };
  for (const auto& example : cases) {
    SCOPED_TRACE(example.description);
    Bench bench;
    example.prepare(bench);
    std::vector<std::string> lines;
    UnattendedUpgrade upgrade(bench, example.plan, [&](auto line) { lines.emplace_back(line); });
    EXPECT_EQ(upgrade.run(), example.status);
    EXPECT_THAT(lines, example.lines);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), example.lastLine);
  }
}

}  // namespace
}  // namespace karvex::app
