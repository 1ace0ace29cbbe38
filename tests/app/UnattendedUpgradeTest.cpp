#include "app/UnattendedUpgrade.hpp"

#include <fmt/format.h>

#include <functional>
#include <string>

#include "tests/ExpectedText.hpp"
#include "tests/ui/UiFixture.hpp"

namespace karvex::app {
namespace {

/// A rig of two boards as the core.
class Fixture final : public ui::UiFixture, public ApplicationCore {
 public:
  void TestBody() override {}
  foundation::Runtime& runtime() override { return UiFixture::runtime; }
  ui::ContentView& view() override { return UiFixture::view; }
  ui::Actions& actions() override { return UiFixture::actions; }
  using UiFixture::misbehave;
  using UiFixture::rig;
};

TEST(UnattendedUpgradeTest, EndsWithWhatBecameOfEachDevice) {
  const auto occupy = [](std::size_t place) {
    return [place](Fixture& fixture) { fixture.rig.terminals.occupy(serialNumberOf(place), "minicom"); };
  };
  const auto deny = [](Fixture& fixture) {
    fixture.rig.bus.inspect(serialNumberOf(0), [](auto& board) { board.setFaults({.deniesAccess = true}); });
  };
  const struct {
    const char* description;
    ScriptedUser::Plan plan;
    std::function<void(Fixture&)> prepare = [](auto&) {};
  } cases[] = {
      {"all of them", {}},
      {"from the second on", {.firstRow = 1}},
      {"no such row", {.firstRow = 2}},
      {"no list", {}, [](auto& fixture) { fixture.misbehave("missing-key=mcu"); }},
      {"the refresh after an answered alert doesn't undo what was done", {.answersAlerts = true}, occupy(1)},
      {"an alert without an answer", {}, occupy(0)},
      {"a board that may not be opened", {}, deny},
  };
  std::string printed;
  for (const auto& example : cases) {
    printed += fmt::format("=== {}\n", example.description);
    Fixture fixture;
    example.prepare(fixture);
    UnattendedUpgrade upgrade(fixture, example.plan,
                              [&](auto line) { printed += fmt::format("{}\n", line); });
    printed += fmt::format("exit status {}\n", static_cast<int>(upgrade.run()));
  }
  expectText(KARVEX_REPORTS "/unattended.txt", printed);
}

}  // namespace
}  // namespace karvex::app
