// The pages of the terminal front, and the lines of the one for a pipe.

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "tests/ExpectedText.hpp"
#include "tests/ui/qt/SampleSnapshots.hpp"
#include "ui/LineText.hpp"
#include "ui/console/Screen.hpp"
#include "ui/console/SnapshotDiff.hpp"
#include "upgrade/LoadProgress.hpp"
#include "upgrade/StopNotice.hpp"

namespace karvex::ui::console {
namespace {

namespace samples = qt::samples;

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
  row.isProgramming = upgrade::isProgramming(status);
  return row;
}

Snapshot twoRows() {
  Snapshot snapshot{.canAct = true};
  snapshot.rows = {rowWith("10"), rowWith("20")};
  return snapshot;
}

std::vector<std::string> textOf(const Snapshot& snapshot, const upgrade::LoadProgress& progress,
                                const std::vector<std::string>& notices, PageSize size) {
  std::vector<std::string> lines;
  for (const auto& line : pageOf(snapshot, progress, notices, size)) {
    lines.push_back(line.plainText());
  }
  return lines;
}

/// The usual pages of a terminal of 24 lines, one below the other.
std::string pagesAt(std::size_t columns) {
  auto crowded = samples::everyStatus();
  crowded.isRunning = true;
  const std::vector<std::string> notices{"the first of four", "POST /services/uploadComplete.php: 500",
                                         "> KARVEX : The run stops: the device can't be programmed.",
                                         "> KARVEX : Acknowledged Status value = 10"};
  const struct {
    const char* name;
    Snapshot snapshot;
    upgrade::LoadProgress progress;
    std::vector<std::string> notices;
  } pages[] = {
      {"no device", samples::empty(), {}, {}},
      {"a device that can be upgraded", samples::selected(), {}, {}},
      {"a run, and three notices",
       samples::running(),
       samples::progress(),
       {notices.begin() + 1, notices.end()}},
      {"a run before its first block", samples::running(), {}, {}},
      {"a run that has ended in its third row has no bar", samples::stopped(), samples::progress(), {}},
      {"every status, and rows that give way to notices", crowded, {}, notices},
      {"an alert", samples::withAlert(upgrade::Alert::halfkayModeFailed), {}, {"a notice"}},
      {"the sheet", samples::withSheet(true), {}, {}},
  };
  std::string text;
  for (const auto& page : pages) {
    text += "=== " + std::string(page.name) + '\n';
    for (auto line : textOf(page.snapshot, page.progress, page.notices, {.columns = columns, .lines = 23})) {
      line.erase(line.find_last_not_of(' ') + 1);
      text += line + '\n';
    }
  }
  return text;
}

TEST(PageTest, ThePagesAtEachWidth) {
  for (const std::size_t columns : {40U, 60U, 80U, 120U}) {
    expectText(std::filesystem::path(KARVEX_PAGES) / (std::to_string(columns) + ".txt"), pagesAt(columns));
  }
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
  return {Snapshot{}, samples::idle(), running, alert, samples::withSheet(true)};
}

TEST(PageTest, NoLineIsEverWiderThanTheTerminal) {
  for (const auto& snapshot : allPages()) {
    for (const std::size_t columns : {1U, 2U, 3U, 7U, 20U, 40U, 79U, 80U, 120U, 200U}) {
      const auto lines = textOf(snapshot, half, {std::string(400, 'n') + "\n"}, {columns, high});
      EXPECT_FALSE(lines.empty());
      for (const auto& line : lines) {
        EXPECT_LE(columnsOf(line), columns) << line;
        EXPECT_EQ(line, lineOf(line)) << "cut inside a character, or a control character in it";
      }
    }
  }
}

TEST(PageTest, TheRowsAroundTheSelectedOneStayOnALowTerminal) {
  Snapshot snapshot{.canAct = true};
  for (int i = 0; i < 100; ++i) {
    snapshot.rows.push_back(rowWith(std::to_string(1000 + i), 5));
  }
  snapshot.isRunning = true;
  const auto shownOn = [&snapshot](std::size_t lines) {
    return textOf(snapshot, half, {"notice"}, {.columns = wide, .lines = lines});
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

TEST(SnapshotDiffTest, ALineForEachChangeAndNoneWithoutOne) {
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
                now.stopNotice = "stopped";
              }),
              ElementsAre("#10 1 - Pedal: carries pedal 2.0\xEF\xBF\xBD[2J now", "! stopped"));
  EXPECT_THAT(linesOf([](auto& now) {
                now.rows.clear();
                now.emptyText = "nothing listed";
              }),
              ElementsAre("nothing listed"));
  const auto list = linesOf([](auto& now) { now.rows.erase(now.rows.begin()); });
  ASSERT_EQ(list.size(), 2U);
  EXPECT_THAT(list[0], AllOf(StartsWith("  Device"), testing::EndsWith("Status")));
  EXPECT_THAT(list[1], AllOf(StartsWith("  1 - Pedal  #20"), testing::EndsWith("● Idle")));
}

TEST(SnapshotDiffTest, AnAlertIsToldOnceAndSoIsItsOk) {
  auto up = twoRows();
  up.stopNotice = "an earlier notice";
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
