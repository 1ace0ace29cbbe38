// The pages of the terminal front, and the lines of the one for a pipe.

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "ui/console/Changes.hpp"
#include "ui/console/Screen.hpp"
#include "upgrade/LoadProgress.hpp"

namespace karvex::ui::console {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

constexpr std::size_t wide = 200;
constexpr std::size_t high = 1000;
constexpr upgrade::LoadProgress half{.blocksSent = 12, .blocksToSend = 24};

DeviceRow rowWith(const std::string& serialNumber, std::uint32_t status = 0) {
  DeviceRow row;
  row.id = foundation::Uuid::random();
  row.device = "1 - Pedal";
  row.serialNumber = "#" + serialNumber;
  row.firmwareName = "pedal";
  row.currentVersion = "1.0";
  row.targetVersion = "2.0";
  row.status = status;
  row.statusText = upgrade::statusText(status);
  row.showsProgress = upgrade::isProgramming(status);
  return row;
}

Snapshot twoRows() {
  Snapshot snapshot{.canAct = true};
  snapshot.rows = {rowWith("10"), rowWith("20")};
  return snapshot;
}

std::vector<std::string> textOf(const Snapshot& snapshot, const upgrade::LoadProgress& progress = {},
                                const std::string& notice = "", std::size_t columns = wide) {
  std::vector<std::string> lines;
  for (const auto& line : pageOf(snapshot, progress, notice, {.columns = columns, .lines = high})) {
    lines.push_back(line.plainText());
  }
  return lines;
}

/// Every page there is, with texts of every kind of length.
std::vector<Snapshot> allPages() {
  auto running = twoRows();
  running.rows[1] = rowWith(std::string(300, '9'), 5);
  running.rows[0].device = "2 - " + std::string(50, 'x') + "\x1b[2J\xFF" + "🎹é";
  running.rows[0].statusText = "";
  running.selected = running.rows[1].id;
  running.isRunning = true;
  auto alert = running;
  alert.alert = AlertText{upgrade::Alert::portBusy, "Device Port currently in use! ",
                          upgrade::messageOf(upgrade::Alert::portBusy, "")};
  auto sheet = twoRows();
  sheet.showsDeviceExplorer = true;
  sheet.isSendingReport = true;
  return {Snapshot{}, twoRows(), running, alert, sheet};
}

TEST(PageTest, NoLineIsEverWiderThanTheTerminal) {
  for (const auto& snapshot : allPages()) {
    for (const std::size_t columns : {1U, 2U, 3U, 7U, 20U, 40U, 79U, 80U, 120U, 200U}) {
      const auto lines = textOf(snapshot, half, std::string(400, 'n') + "\n", columns);
      EXPECT_FALSE(lines.empty());
      for (const auto& line : lines) {
        EXPECT_LE(columnsOf(line), columns) << line;
        EXPECT_EQ(line, printable(line)) << "cut inside a character, or a control character in it";
      }
    }
  }
}

TEST(PageTest, TheRowsAroundTheSelectedOneStayOnALowTerminal) {
  Snapshot snapshot{.canAct = true};
  for (int i = 0; i < 100; ++i) {
    snapshot.rows.push_back(rowWith(std::to_string(1000 + i), 5));
  }
  const auto shownOn = [&snapshot](std::size_t lines) {
    std::vector<std::string> shown;
    for (const auto& line : pageOf(snapshot, half, "notice", {.columns = wide, .lines = lines})) {
      shown.push_back(line.plainText());
    }
    return shown;
  };
  for (const std::size_t lines : {12U, 13U, 24U, 60U}) {
    EXPECT_THAT(shownOn(lines), AllOf(SizeIs(lines), Contains(HasSubstr("#1000 ")))) << "from the top";
    for (const std::size_t selected : {0U, 1U, 50U, 98U, 99U}) {
      snapshot.selected = snapshot.rows[selected].id;
      const auto shown = shownOn(lines);
      EXPECT_THAT(shown, SizeIs(lines));
      const auto row = std::ranges::find_if(shown, [](const auto& line) { return line.starts_with("> "); });
      ASSERT_NE(row, shown.end()) << selected << " of " << lines;
      EXPECT_THAT(*row, HasSubstr(snapshot.rows[selected].serialNumber));
      EXPECT_THAT(*std::next(row), HasSubstr("12/24 blocks"));
      EXPECT_EQ(shown.back(), "notice");
    }
    snapshot.selected.reset();
  }
  snapshot.alert = AlertText{upgrade::Alert::procedureComplete, "Title", "one\ntwo"};
  for (const std::size_t lines : {1U, 3U, 6U}) {
    EXPECT_THAT(shownOn(lines), SizeIs(lines));
    EXPECT_EQ(shownOn(lines).back(), "notice") << "the end is what matters";
  }
  EXPECT_EQ(shownOn(1000).size(), 100U + 4U + 1U + 4U + 1U) << "all of it where there is room";
}

TEST(PageTest, ShowsTheRowsTheMarkAndWhatTheKeysDo) {
  auto snapshot = twoRows();
  snapshot.selected = snapshot.rows[1].id;
  snapshot.canUpload = true;
  snapshot.rows[1].onlineMark = Tone::orange;
  snapshot.rows[1].statusTone = Tone::red;
  snapshot.rows[1].currentVersionTone = Tone::green;
  const auto page = pageOf(snapshot, {}, "what was printed", {.columns = wide, .lines = high});
  const auto row = std::ranges::find_if(page, &StyledLine::isReversed);
  ASSERT_NE(row, page.end());
  EXPECT_THAT(row->plainText(), AllOf(StartsWith("> 1 - Pedal  #20"), HasSubstr("● Idle")));
  const auto toneOf = [&](const std::string& text) {
    return std::ranges::find_if(row->spans, [&](const Span& span) { return span.text.starts_with(text); })
        ->tone;
  };
  EXPECT_EQ(toneOf("●"), Tone::orange);
  EXPECT_EQ(toneOf("Idle"), Tone::red);
  EXPECT_EQ(toneOf("1.0"), Tone::green);
  const auto lines = textOf(snapshot, {}, "what was printed");
  EXPECT_THAT(lines, Contains("up/down: select  u: Upload Firmware  r: refresh  s: sync  q: quit"));
  EXPECT_EQ(lines.back(), "what was printed");
  EXPECT_THAT(textOf(Snapshot{}), AllOf(Contains("  (no device)"), Contains("up/down: select  q: quit")));
}

TEST(PageTest, TheBarIsBelowTheRowInWorkWhileItIsProgrammed) {
  const auto bar = HasSubstr("12/24 blocks");
  auto snapshot = twoRows();
  snapshot.rows[1] = rowWith("20", 5);
  snapshot.isRunning = true;
  snapshot.canAct = false;
  EXPECT_THAT(textOf(snapshot, half), Not(Contains(bar))) << "no row is in work";
  snapshot.selected = snapshot.rows[1].id;
  const auto lines = textOf(snapshot, half);
  const auto row = std::ranges::find_if(lines, [](const auto& line) { return line.starts_with("> "); });
  ASSERT_NE(row, lines.end());
  EXPECT_THAT(*std::next(row), bar);
  EXPECT_THAT(lines, Contains("q: quit")) << "nothing else can be done";
  EXPECT_THAT(textOf(snapshot), Not(Contains(HasSubstr("blocks")))) << "not known yet";
  snapshot.rows[1] = rowWith("20", 6);
  snapshot.selected = snapshot.rows[1].id;
  EXPECT_THAT(textOf(snapshot, half), Not(Contains(bar))) << "over";
}

TEST(PageTest, AnAlertIsAheadOfTheSheetAndTheKeys) {
  auto snapshot = twoRows();
  snapshot.showsDeviceExplorer = true;
  EXPECT_THAT(textOf(snapshot), AllOf(Contains("  Connect your device to your computer"),
                                      Contains("  Enter: Click Me    x: close")));
  snapshot.alert = AlertText{upgrade::Alert::procedureComplete, "Title", "one\n\nthree "};
  const auto lines = textOf(snapshot);
  EXPECT_THAT(std::vector(lines.end() - 5, lines.end()),
              ElementsAre("! Title", "  one", "  ", "  three ", "  Enter: OK"));
  EXPECT_THAT(lines, Not(Contains(HasSubstr("Click Me"))));
}

TEST(PageTest, WhatAnAlertAndANoticeSayIsWrappedAndNotCut) {
  auto snapshot = twoRows();
  snapshot.alert =
      AlertText{upgrade::Alert::halfkayModeFailed, "Title", "Notify your dealer: the port is in use"};
  const auto lines = textOf(snapshot, {}, "An upgrade is running. Wait.", 20);
  EXPECT_THAT(std::vector(lines.end() - 7, lines.end()),
              ElementsAre("! Title", "  Notify your", "  dealer: the port", "  is in use", "  Enter: OK",
                          "An upgrade is", "running. Wait."));
}

TEST(ChangesTest, ALineForEachChangeAndNoneWithoutOne) {
  const auto before = twoRows();
  const auto linesOf = [&before](const std::function<void(Snapshot&)>& change) {
    auto after = before;
    change(after);
    return changesBetween(before, after);
  };
  EXPECT_THAT(linesOf([](auto&) {}), IsEmpty());
  EXPECT_THAT(
      linesOf([](auto& now) {
        now.rows[0].status = 5;
        now.rows[0].statusText = "Programming...";
        now.rows[1].onlineMark = Tone::orange;
        now.selected = now.rows[1].id;
      }),
      ElementsAre("#10 1 - Pedal: Programming...", "#20 1 - Pedal: offline", "#20 1 - Pedal: selected"));
  EXPECT_THAT(linesOf([](auto& now) {
                now.rows[0].currentVersion = "2.0\x1b[2J";
                now.selected = foundation::Uuid::random();
              }),
              ElementsAre("#10 1 - Pedal: carries pedal 2.0\xEF\xBF\xBD[2J now"));
  EXPECT_THAT(linesOf([](auto& now) { now.rows.clear(); }), IsEmpty())
      << "a list is emptied before it is filled";
  const auto list = linesOf([](auto& now) { now.rows.erase(now.rows.begin()); });
  ASSERT_EQ(list.size(), 2U);
  EXPECT_THAT(list[0], AllOf(StartsWith("  Device"), testing::EndsWith("Status")));
  EXPECT_THAT(list[1], AllOf(StartsWith("  1 - Pedal  #20"), testing::EndsWith("● Idle")));
}

TEST(ChangesTest, AnAlertIsToldOnceAndSoIsItsOk) {
  auto up = twoRows();
  const auto down = up;
  up.alert = AlertText{upgrade::Alert::uploadError, "Title", "one\ntwo"};
  auto other = up;
  other.alert->alert = upgrade::Alert::portBusy;
  auto changed = up;
  changed.alert->message = "other words";
  EXPECT_THAT(changesBetween(down, up), ElementsAre("! Title", "  one", "  two"));
  EXPECT_THAT(changesBetween(up, other), ElementsAre("! Title", "  one", "  two"));
  EXPECT_THAT(changesBetween(up, down), ElementsAre("OK"));
  EXPECT_THAT(changesBetween(up, changed), IsEmpty());
}

}  // namespace
}  // namespace karvex::ui::console
