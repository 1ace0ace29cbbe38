#include <gmock/gmock.h>

#include <QClipboard>
#include <QLabel>
#include <string>

#include "tests/ui/qt/WindowFixture.hpp"
#include "ui/qt/ActionRow.hpp"
#include "ui/qt/AlertBox.hpp"
#include "ui/qt/NoticeStrip.hpp"
#include "ui/qt/SyncSheet.hpp"

namespace karvex::ui::qt {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

/// The one dialog of its kind that is on the screen, or null.
template <typename Dialog>
Dialog* shown(WindowFixture& bench) {
  Dialog* found = nullptr;
  for (auto* dialog : bench.window.findChildren<Dialog*>()) {
    if (dialog->isVisible()) {
      EXPECT_EQ(found, nullptr) << "two at once";
      found = dialog;
    }
  }
  return found;
}

std::string textOf(const AlertBox& box, const char* label) {
  const auto* found = box.findChild<QLabel*>(QLatin1String(label));
  EXPECT_EQ(found->textFormat(), Qt::PlainText);
  return found->text().toStdString();
}

TEST(MainWindow, TellsOnceThatItIsOnTheScreen) {
  RecordingActions actions;
  MainWindow window({actions, [] { return upgrade::LoadProgress(); }, [](Leaving) {}});
  EXPECT_THAT(actions.calls, IsEmpty());
  window.show();
  window.hide();
  window.show();
  EXPECT_THAT(actions.calls, ElementsAre("appear"));
}

struct ButtonCase {
  const char* name;
  std::string_view text;
  std::string_view help;
  bool Snapshot::* isFree;
  Qt::Key key;
  Qt::KeyboardModifiers modifiers;
};

const std::vector<ButtonCase> buttons{
    {"upload", "Upload Firmware", "Start device(s) upload process", &Snapshot::canUpload, Qt::Key_U,
     Qt::ControlModifier},
    {"refresh", "", "Refresh device list", &Snapshot::canAct, Qt::Key_F5, Qt::NoModifier},
    {"sync", "", "Sync your current equipment information", &Snapshot::canAct, Qt::Key_E,
     Qt::ControlModifier}};

TEST(MainWindow, EachButtonHasItsTextsAndWorksByMouseEnterSpaceAndShortcut) {
  for (const auto& one : buttons) {
    SCOPED_TRACE(one.name);
    WindowFixture bench(samples::selected());
    auto& button = bench.button(one.name);
    EXPECT_EQ(button.text().toStdString(), one.text);
    EXPECT_EQ(button.toolTip().toStdString(), one.help);
    EXPECT_FALSE(button.accessibleName().isEmpty());
    EXPECT_FALSE(button.icon().isNull());
    QTest::mouseClick(&button, Qt::LeftButton);
    QTest::keyClick(&button, Qt::Key_Return);
    QTest::keyClick(&button, Qt::Key_Space);
    QTest::keyClick(&bench.table(), one.key, one.modifiers);
    EXPECT_TRUE(QTest::qWaitFor([&] { return bench.actions.calls.size() == 4; }));
    EXPECT_THAT(bench.actions.calls, Each(std::string(one.name)));
  }
}

TEST(MainWindow, ADisabledButtonDoesNothing) {
  for (const auto& one : buttons) {
    SCOPED_TRACE(one.name);
    auto snapshot = samples::selected();
    snapshot.*one.isFree = false;
    WindowFixture bench(snapshot);
    auto& button = bench.button(one.name);
    EXPECT_FALSE(button.isEnabled());
    QTest::mouseClick(&button, Qt::LeftButton);
    QTest::keyClick(&button, Qt::Key_Return);
    QTest::keyClick(&bench.table(), one.key, one.modifiers);
    QTest::qWait(0);
    EXPECT_THAT(bench.actions.calls, IsEmpty());
  }
}

TEST(MainWindow, ShowsTheInstructionWithItsEmphasis) {
  WindowFixture bench(samples::idle());
  const auto* instruction = bench.window.findChild<ActionRow*>()->findChild<QLabel*>();
  EXPECT_EQ(instruction->text(),
            "Click on the first item of the list, then click on 'Upload firmware' button.<br>"
            "<b>DO NOT</b> power-down or disconnect your equipment until the upgrade procedure completes!");
}

class EachAlert : public testing::TestWithParam<upgrade::Alert> {};
INSTANTIATE_TEST_SUITE_P(MainWindow, EachAlert, testing::ValuesIn(upgrade::alertsInOrder));

TEST_P(EachAlert, ShowsItsTextsAndStaysUntilTheSnapshotHasItNoMore) {
  WindowFixture bench(samples::idle());
  const auto snapshot = samples::withAlert(GetParam());
  for (const auto before : {upgrade::Alert::portBusy, upgrade::Alert::uploadError}) {
    bench.window.draw(samples::withAlert(before));
  }
  bench.window.draw(snapshot);
  auto* box = shown<AlertBox>(bench);
  ASSERT_NE(box, nullptr);
  EXPECT_EQ(box->windowModality(), Qt::WindowModal);
  EXPECT_EQ(textOf(*box, "title"), snapshot.alert->title);
  EXPECT_EQ(textOf(*box, "message"), snapshot.alert->message);
  const auto buttonsOfBox = box->findChildren<QPushButton*>();
  ASSERT_EQ(buttonsOfBox.size(), 1);
  EXPECT_EQ(buttonsOfBox.front()->text(), "OK");

  QTest::mouseClick(buttonsOfBox.front(), Qt::LeftButton);
  EXPECT_THAT(bench.actions.confirmed, ElementsAre(GetParam()));
  EXPECT_TRUE(box->isVisible()) << "the main queue may be blocked: the alert is still up";
  bench.window.draw(samples::idle());
  EXPECT_EQ(shown<AlertBox>(bench), nullptr);
}

TEST_P(EachAlert, IsConfirmedByEnterEscapeAndItsWindowsCloseButton) {
  WindowFixture bench(samples::withAlert(GetParam()));
  auto* box = shown<AlertBox>(bench);
  ASSERT_NE(box, nullptr);
  QTest::keyClick(box, Qt::Key_Return);
  QTest::keyClick(box, Qt::Key_Escape);
  box->close();
  EXPECT_THAT(bench.actions.confirmed, ElementsAre(GetParam(), GetParam(), GetParam()));
  EXPECT_TRUE(box->isVisible());
}

TEST_P(EachAlert, SaysItsTitleOnceAndCanBeCopied) {
  WindowFixture bench(samples::withAlert(GetParam()));
  auto* box = shown<AlertBox>(bench);
  EXPECT_EQ(box->windowTitle(), bench.window.windowTitle());
  QTest::keyClick(box, Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QApplication::clipboard()->text().toStdString(),
            textOf(*box, "title") + "\n\n" + textOf(*box, "message"));
}

TEST(MainWindow, AnAlertThatIsUpAtStartComesWhenTheWindowHasItsPlace) {
  RecordingActions actions;
  MainWindow window({actions, samples::progress, [](Leaving) {}});
  window.draw(samples::withAlert(upgrade::Alert::halfkayModeDetected));
  EXPECT_EQ(window.findChild<AlertBox*>(), nullptr);
  window.show();
  EXPECT_TRUE(QTest::qWaitFor([&] { return window.findChild<AlertBox*>() != nullptr; }));
  EXPECT_TRUE(window.geometry().contains(window.findChild<AlertBox*>()->geometry().center()));
}

TEST(MainWindow, SaysInItsStripWhyARunStoppedAndWhyItStays) {
  WindowFixture bench(samples::stopped());
  auto* strip = bench.window.findChild<NoticeStrip*>();
  auto* text = strip->findChild<QLabel*>();
  const auto reason = QString::fromStdString(samples::stopped().stopNotice);
  EXPECT_TRUE(strip->isVisible());
  EXPECT_EQ(text->text(), reason);
  auto snapshot = samples::stopped();
  snapshot.isReporting = true;
  bench.window.draw(snapshot);
  bench.window.close();
  EXPECT_EQ(text->text().section(u'\n', 1), reason) << "both, one below the other";
  text->setFocus();
  QTest::keyClick(text, Qt::Key_Home, Qt::ControlModifier);
  QTest::keyClick(text, Qt::Key_End, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(text->selectedText(), text->text().replace(u'\n', QChar::ParagraphSeparator));
  bench.window.draw(samples::idle());
  EXPECT_FALSE(strip->isVisible());
}

TEST(MainWindow, NamesInAnAlertCantTurnItsTextOrWidenIt) {
  const auto alert = upgrade::Alert::halfkayModeFailed;
  const auto with = [&](const std::string& name) {
    return AlertText{alert, std::string(upgrade::titleOf(alert)), upgrade::messageOf(alert, name)};
  };
  std::string words = " that";
  for (int i = 0; i < 5; ++i) {
    words += words;
  }
  WindowFixture bench({.alert = with("port \xE2\x80\xAE\x1b[0m\xF3\xA0\x80\x81" + words)});
  auto* box = shown<AlertBox>(bench);
  EXPECT_EQ(textOf(*box, "message"), with("port \xEF\xBF\xBD\xEF\xBF\xBD[0m\xEF\xBF\xBD" + words).message);
  EXPECT_LT(box->width(), 900);
}

TEST(MainWindow, AnAlertOverTheSheetOutlivesIt) {
  WindowFixture bench(samples::withSheet(true));
  auto snapshot = samples::withSheet(true);
  snapshot.alert = samples::withAlert(upgrade::Alert::portBusy).alert;
  bench.window.draw(snapshot);
  snapshot.showsDeviceExplorer = false;  // Its report was answered.
  bench.window.draw(snapshot);
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_EQ(shown<SyncSheet>(bench), nullptr);
  auto* box = shown<AlertBox>(bench);
  ASSERT_NE(box, nullptr);
  QTest::keyClick(box, Qt::Key_Return);
  EXPECT_THAT(bench.actions.confirmed, ElementsAre(upgrade::Alert::portBusy));
}

TEST(MainWindow, AnAlertKeepsTheMouseAndTheShortcutsFromTheWindow) {
  WindowFixture bench(samples::selected());
  auto snapshot = samples::selected();
  snapshot.alert = samples::withAlert(upgrade::Alert::portBusy).alert;
  bench.window.draw(snapshot);
  ASSERT_NE(shown<AlertBox>(bench), nullptr);
  // As the display server sends it: to the window, not to the widget.
  const auto place = bench.button("upload").mapTo(&bench.window, bench.button("upload").rect().center());
  QTest::mouseClick(bench.window.windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
  QTest::keyClick(bench.window.windowHandle(), Qt::Key_U, Qt::ControlModifier);
  QTest::qWait(0);
  EXPECT_THAT(bench.actions.calls, IsEmpty());
}

TEST(SyncSheet, SendsAndClosesWhenTheSnapshotSaysSo) {
  WindowFixture bench(samples::withSheet(false));
  auto* sheet = shown<SyncSheet>(bench);
  ASSERT_NE(sheet, nullptr);
  EXPECT_EQ(sheet->windowModality(), Qt::WindowModal);
  auto* busy = sheet->findChild<QProgressBar*>();
  EXPECT_FALSE(busy->isVisible());
  auto* send = sheet->findChild<QPushButton*>(QStringLiteral("send"));
  EXPECT_EQ(send->text(), "Click Me");
  QTest::mouseClick(send, Qt::LeftButton);
  QTest::keyClick(sheet, Qt::Key_Return);
  EXPECT_THAT(bench.actions.calls, ElementsAre("sendReport", "sendReport"));

  bench.window.draw(samples::withSheet(true));
  EXPECT_TRUE(busy->isVisible());
  EXPECT_EQ(busy->maximum(), 0) << "its end isn't known";
  EXPECT_TRUE(send->isEnabled()) << "a second click sends a second report";
  bench.window.draw(samples::withSheet(false));  // It failed.
  EXPECT_FALSE(busy->isVisible());
  EXPECT_TRUE(sheet->isVisible());
  bench.window.draw(samples::idle());  // It went out.
  EXPECT_EQ(shown<SyncSheet>(bench), nullptr);
}

TEST(SyncSheet, CanBeClosedWhileAReportIsUnderWayAndOpenedAnew) {
  WindowFixture bench(samples::withSheet(true));
  auto* sheet = shown<SyncSheet>(bench);
  ASSERT_NE(sheet, nullptr);
  auto* close = sheet->findChild<QPushButton*>(QStringLiteral("close"));
  QTest::mouseClick(close, Qt::LeftButton);
  QTest::keyClick(sheet, Qt::Key_Escape);
  sheet->close();
  EXPECT_THAT(bench.actions.calls, ElementsAre("closeSheet", "closeSheet", "closeSheet"));
  bench.window.draw(samples::idle());
  bench.window.draw(samples::withSheet(false));
  auto* next = shown<SyncSheet>(bench);
  ASSERT_NE(next, nullptr);
  EXPECT_FALSE(next->findChild<QProgressBar*>()->isVisible());
}

TEST(SyncSheet, ShowsItsLines) {
  WindowFixture bench(samples::withSheet(false));
  const auto labels = shown<SyncSheet>(bench)->findChildren<QLabel*>();
  ASSERT_EQ(labels.size(), 1);
  EXPECT_EQ(labels.front()->text(),
            "Connect your device to your computer\n"
            "(Will be easier for the device explorer if your device is the only one connected!)\n"
            "Make sure you device is connected and powered-up\n"
            "\n"
            "Click below when done to synchronize your configuration information.");
  EXPECT_EQ(labels.front()->alignment(), Qt::AlignCenter);
}

TEST(Closing, IsLeftToWhoeverKnowsWhetherARunIsGoing) {
  WindowFixture bench(samples::idle());
  bench.window.close();
  EXPECT_TRUE(bench.window.isVisible());
  EXPECT_THAT(bench.closeRequests, ElementsAre(Leaving::byUser));
  EXPECT_FALSE(bench.window.findChild<NoticeStrip*>()->isVisible());
  bench.window.draw(samples::withAlert(upgrade::Alert::portBusy));
  EXPECT_EQ(bench.closeRequests.size(), 2U) << "nobody has answered yet";
  bench.window.closeForGood();
  EXPECT_FALSE(bench.window.isVisible());
}

TEST(Closing, IsHeldBackDuringARunWithTheReasonShownAndAskedForBehindItsSuccess) {
  WindowFixture bench(samples::running());
  auto* notice = bench.window.findChild<NoticeStrip*>();
  QTest::keyClick(&bench.table(), Qt::Key_Q, Qt::ControlModifier);
  EXPECT_TRUE(notice->isVisible());
  auto snapshot = samples::running();
  snapshot.isRunning = false;
  snapshot.isReporting = true;
  bench.window.draw(snapshot);  // The alert is not up yet.
  snapshot.alert = samples::withAlert(upgrade::Alert::procedureComplete).alert;
  bench.window.draw(snapshot);
  EXPECT_TRUE(notice->isVisible());
  EXPECT_THAT(bench.closeRequests, IsEmpty());
  bench.window.draw(samples::idle());  // The user has answered the alert meanwhile.
  EXPECT_THAT(bench.closeRequests, ElementsAre(Leaving::byUser));
  EXPECT_FALSE(notice->isVisible());
}

TEST(Closing, ByOrderWaitsForTheRunAndForNothingElse) {
  WindowFixture bench(samples::running());
  bench.window.closeByOrder();
  bench.window.close();
  EXPECT_TRUE(bench.window.findChild<NoticeStrip*>()->isVisible());
  EXPECT_THAT(bench.closeRequests, IsEmpty());
  bench.window.draw(samples::withAlert(upgrade::Alert::portBusy));
  EXPECT_THAT(bench.closeRequests, ElementsAre(Leaving::byOrder));
}

}  // namespace
}  // namespace karvex::ui::qt
