// What an assistive tool is told, and the way through the window without a mouse.

#include <gmock/gmock.h>

#include <QAccessible>
#include <string>
#include <vector>

#include "tests/ui/qt/WindowFixture.hpp"
#include "ui/qt/AlertBox.hpp"
#include "ui/qt/NoticeStrip.hpp"
#include "ui/qt/SyncSheet.hpp"

namespace karvex::ui::qt {
namespace {

using testing::ElementsAre;

QAccessibleInterface& interfaceOf(QObject* object) {
  return *QAccessible::queryAccessibleInterface(object);
}

std::string nameOf(QObject* object) {
  return interfaceOf(object).text(QAccessible::Name).toStdString();
}

/// Where the Tab key leads, from where the keyboard is, until it is there again.
std::vector<std::string> roundByTab(QWidget& window) {
  std::vector<std::string> names;
  const auto* start = window.focusWidget();
  do {
    names.push_back(nameOf(window.focusWidget()));
    QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
  } while (window.focusWidget() != start && names.size() < 10);
  return names;
}

TEST(Accessibility, TheWindowsPartsSayWhatTheyAre) {
  WindowFixture bench(samples::selected());
  EXPECT_EQ(nameOf(&bench.button("upload")), "Upload Firmware");
  EXPECT_EQ(nameOf(&bench.button("refresh")), "Refresh device list");
  EXPECT_EQ(nameOf(&bench.button("sync")), "Sync your current equipment information");
  EXPECT_EQ(nameOf(&bench.table()), "Devices");
  for (const auto* name : {"upload", "refresh", "sync"}) {
    EXPECT_EQ(interfaceOf(&bench.button(name)).role(), QAccessible::Button);
  }
  auto& table = interfaceOf(&bench.table());
  EXPECT_EQ(table.tableInterface()->columnDescription(5), "Status");
  EXPECT_TRUE(table.tableInterface()->cellAt(0, 0)->state().selected);
  EXPECT_FALSE(table.tableInterface()->cellAt(1, 0)->state().selected);
}

TEST(Accessibility, TheTabKeyLeadsFromTheTableOverTheButtonsThatAreFree) {
  WindowFixture bench(samples::selected());
  EXPECT_THAT(roundByTab(bench.window), ElementsAre("Devices", "Upload Firmware", "Refresh device list",
                                                    "Sync your current equipment information"));
  bench.window.draw(samples::idle());
  EXPECT_THAT(roundByTab(bench.window),
              ElementsAre("Devices", "Refresh device list", "Sync your current equipment information"));
  bench.window.draw(samples::running());
  EXPECT_THAT(roundByTab(bench.window), ElementsAre("Devices"));
}

TEST(Accessibility, AnAlertIsReadOutAndHasTheKeyboard) {
  WindowFixture bench(samples::idle());
  bench.window.draw(samples::withAlert(upgrade::Alert::portBusy));
  auto* box = bench.window.findChild<AlertBox*>();
  EXPECT_EQ(nameOf(box), upgrade::titleOf(upgrade::Alert::portBusy));
  EXPECT_EQ(interfaceOf(box).text(QAccessible::Description).toStdString(),
            upgrade::messageOf(upgrade::Alert::portBusy, ""));
  EXPECT_EQ(interfaceOf(box).role(), QAccessible::Dialog);
  EXPECT_THAT(roundByTab(*box), ElementsAre("OK"));
}

TEST(Accessibility, TheSheetsButtonsAreReachedByTab) {
  WindowFixture bench(samples::withSheet(true));
  auto* sheet = bench.window.findChild<SyncSheet*>();
  EXPECT_EQ(nameOf(sheet), "Sync your current equipment information");
  EXPECT_THAT(roundByTab(*sheet), ElementsAre("Click Me", "Close"));
  EXPECT_EQ(nameOf(sheet->findChild<QProgressBar*>()), "Sending");
}

TEST(Accessibility, ANoticeIsReadOutAndReachedByTab) {
  WindowFixture bench(samples::stopped());
  EXPECT_EQ(nameOf(bench.window.findChild<NoticeStrip*>()), samples::stopped().stopNotice);
  EXPECT_THAT(roundByTab(bench.window), testing::Contains(samples::stopped().stopNotice));
}

}  // namespace
}  // namespace karvex::ui::qt
