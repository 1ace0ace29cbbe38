// The whole application on the rig, used through its window with the mouse and the keyboard.

#include <gmock/gmock.h>

#include <QAbstractItemModel>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <algorithm>
#include <functional>
#include <future>
#include <memory>
#include <string>

#include "app/WindowProgram.hpp"
#include "app/rig/RigCore.hpp"
#include "foundation/Log.hpp"
#include "ui/qt/AlertBox.hpp"
#include "ui/qt/DeviceTable.hpp"
#include "ui/qt/NoticeStrip.hpp"
#include "ui/qt/SyncSheet.hpp"

namespace karvex::app {
namespace {

using ui::qt::AlertBox;
using ui::qt::SyncSheet;

/// The rig's time runs as fast as the machine can; the window is the real one.
class RunInWindow : public testing::Test {
 protected:
  ~RunInWindow() override {
    program_.reset();  // It may still say something.
    foundation::log::redirectSystem(nullptr);
  }

  static constexpr int patience = 20000;  // Milliseconds, for a slow machine.
  static constexpr int statusColumn = 5;

  void make() {
    program_ = std::make_unique<WindowProgram>(
        [this] { return std::make_unique<RigCore>(common_, options, record_, [](const RunRecord&) {}); });
  }
  void start() {
    make();
    window().show();
    window().activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window()));
    ASSERT_TRUE(eventually(
        [this] { return table().model()->rowCount() == static_cast<int>(options.equipment.boards); }));
  }
  /// Ends the program. What happened on the rig.
  const RunRecord& end() {
    program_.reset();
    return record_;
  }

  static bool eventually(const std::function<bool()>& condition) {
    return QTest::qWaitFor(condition, patience);
  }
  WindowProgram& program() { return *program_; }
  ui::qt::MainWindow& window() { return program_->window(); }
  ui::qt::DeviceTable& table() { return *window().findChild<ui::qt::DeviceTable*>(); }
  QPushButton& button(const char* name) { return *window().findChild<QPushButton*>(QLatin1String(name)); }
  std::string textAt(int row, int column) {
    return table().model()->index(row, column).data().toString().toStdString();
  }

  template <typename Dialog>
  Dialog* shown() {
    for (auto* dialog : window().findChildren<Dialog*>()) {
      if (dialog->isVisible()) {
        return dialog;
      }
    }
    return nullptr;
  }
  std::string titleOfAlert() {
    return shown<AlertBox>()
               ? shown<AlertBox>()->findChild<QLabel*>(QStringLiteral("title"))->text().toStdString()
               : "";
  }
  void clickRow(int row) {
    const auto cell = table().visualRect(table().model()->index(row, 0));
    QTest::mouseClick(table().viewport(), Qt::LeftButton, Qt::NoModifier, cell.center());
  }
  /// As the user does; the window goes when the service knows of every upgrade.
  void close() {
    window().close();
    EXPECT_TRUE(window().isVisible()) << "the main queue is asked first";
    EXPECT_TRUE(eventually([&] { return !window().isVisible(); }));
  }
  /// A display server doesn't send the mouse to a dialog that it hasn't shown yet.
  static void clickIn(QDialog& dialog, const char* name) {
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog, patience));
    QTest::mouseClick(dialog.findChild<QPushButton*>(QLatin1String(name)), Qt::LeftButton);
  }
  void click(const char* name) {
    ASSERT_TRUE(eventually([&] { return button(name).isEnabled(); })) << name;
    QTest::mouseClick(&button(name), Qt::LeftButton);
  }

  ApplicationOptions options;

 private:
  const CommonOptions common_{.realTime = false};
  RunRecord record_;
  std::unique_ptr<WindowProgram> program_;
};

TEST_F(RunInWindow, UpgradesAllBoardsByMouseAndByKeyboard) {
  for (const bool byMouse : {true, false}) {
    start();
    EXPECT_FALSE(button("upload").isEnabled());
    byMouse ? clickRow(0) : QTest::keyClick(&table(), Qt::Key_Down);
    ASSERT_TRUE(eventually([this] { return button("upload").isEnabled(); }));
    byMouse ? click("upload") : QTest::keyClick(&window(), Qt::Key_U, Qt::ControlModifier);
    ASSERT_TRUE(eventually([this] { return titleOfAlert() == "Upgrade Procedure Complete"; }));
    for (int row = 0; row < 3; ++row) {
      EXPECT_EQ(textAt(row, statusColumn), "Success");
    }
    byMouse ? clickIn(*shown<AlertBox>(), "ok") : QTest::keyClick(shown<AlertBox>(), Qt::Key_Return);
    ASSERT_TRUE(eventually([this] { return shown<AlertBox>() == nullptr; }));
    EXPECT_FALSE(button("upload").isEnabled());
    EXPECT_TRUE(button("refresh").isEnabled());
    close();
    for (const auto& board : end().boards) {
      EXPECT_TRUE(board.bootReport && board.flashMatches && board.isReported) << board.serialNumber;
    }
  }
}

struct FailureCase {
  const char* name;
  std::function<void(ApplicationOptions&)> arrange;
  const char* title;
  const char* end = "";  ///< of the message
};

class FailureInWindow : public RunInWindow, public testing::WithParamInterface<FailureCase> {};

TEST_P(FailureInWindow, IsToldAndItsOkBringsTheListBack) {
  GetParam().arrange(options);
  start();
  clickRow(0);
  click("upload");
  ASSERT_TRUE(eventually([&] { return titleOfAlert() == GetParam().title; })) << titleOfAlert();
  const auto message = shown<AlertBox>()->findChild<QLabel*>(QStringLiteral("message"))->text();
  EXPECT_THAT(message.toStdString(), testing::EndsWith(GetParam().end));
  QTest::keyClick(shown<AlertBox>(), Qt::Key_Return);
  ASSERT_TRUE(eventually([&] { return shown<AlertBox>() == nullptr; }));
  ASSERT_TRUE(eventually([&] { return table().model()->rowCount() == 3 && button("refresh").isEnabled(); }));
  EXPECT_FALSE(button("upload").isEnabled()) << "until a row is chosen again";
}

INSTANTIATE_TEST_SUITE_P(
    RunInWindow, FailureInWindow,
    testing::Values(FailureCase{"PortBusy", [](auto& options) { options.equipment.occupied.insert(0); },
                                "Device Port currently in use! "},
                    FailureCase{"PortSnatched", [](auto& options) { options.equipment.snatched.insert(0); },
                                "Could not switch device to programming mode",
                                "info: Serial port /dev/cu.usbmodem10000101 can't be opened: it is in use by "
                                "another program"},
                    FailureCase{"Upload",
                                [](auto& options) {
                                  EXPECT_EQ(
                                      rig::addFault("never-enters-halfkay", options.equipment.faults[0]),
                                      std::nullopt);
                                },
                                "An error occurred during upload"},
                    FailureCase{"Download",
                                [](auto& options) {
                                  EXPECT_EQ(rig::addServiceFault("cut-off@firmware", options.serviceFaults),
                                            std::nullopt);
                                },
                                "Could not download Firmware file"}),
    [](const auto& one) { return one.param.name; });

TEST_F(RunInWindow, ABoardInItsBootloaderIsToldOfAndItsOkBringsItBack) {
  ASSERT_EQ(rig::addFault("in-halfkay", options.equipment.faults[1]), std::nullopt);
  make();
  window().show();
  ASSERT_TRUE(eventually([&] { return titleOfAlert() == "Device already in programming mode"; }));
  EXPECT_FALSE(button("upload").isEnabled());
  clickIn(*shown<AlertBox>(), "ok");
  ASSERT_TRUE(eventually([&] { return shown<AlertBox>() == nullptr; }));
  click("refresh");
  ASSERT_TRUE(eventually([&] {
    clickRow(1);
    return button("upload").isEnabled();
  })) << "its serial port is back";
  EXPECT_EQ(shown<AlertBox>(), nullptr);
  EXPECT_EQ(end().boards[1].state, "running");
}

TEST_F(RunInWindow, TheSheetSendsTheReportAndCloses) {
  start();
  click("sync");
  ASSERT_TRUE(eventually([&] { return shown<SyncSheet>() != nullptr; }));
  clickIn(*shown<SyncSheet>(), "send");
  ASSERT_TRUE(eventually([&] { return shown<SyncSheet>() == nullptr; }));
  EXPECT_TRUE(std::ranges::any_of(
      end().requests, [](const auto& request) { return request.path == "/services/deviceExplorer.php"; }));
}

TEST_F(RunInWindow, AClosedWindowGoesByItselfBehindTheRun) {
  start();
  clickRow(0);
  click("upload");
  close();
  for (const auto& board : end().boards) {
    EXPECT_TRUE(board.flashMatches && board.isReported) << board.serialNumber;
  }
}

TEST_F(RunInWindow, AClosedWindowStaysForAFailureThatNoAlertTellsOf) {
  ASSERT_EQ(rig::addFault("refuses-for-good", options.equipment.faults[1]), std::nullopt);
  std::promise<void> isClosed;
  foundation::log::redirectSystem([ready = isClosed.get_future().share()](std::string_view line) {
    if (line.ends_with("Calling File loader...")) {
      ready.wait();  // The run would be over before anybody could close the window.
    }
  });
  start();
  clickRow(0);
  click("upload");
  ASSERT_TRUE(eventually([&] { return !button("refresh").isEnabled(); }));
  window().close();
  auto& notice = *window().findChild<ui::qt::NoticeStrip*>();
  EXPECT_TRUE(notice.isVisible());
  isClosed.set_value();
  ASSERT_TRUE(eventually([&] {
    return button("refresh").isEnabled() &&
           notice.accessibleName().startsWith(u"The upgrade stopped at device");
  }));
  EXPECT_EQ(textAt(1, statusColumn), "Program error");
  EXPECT_EQ(shown<AlertBox>(), nullptr);
  QTest::qWait(100);
  EXPECT_TRUE(window().isVisible());
  close();
  EXPECT_TRUE(end().boards[0].isReported);
}

TEST_F(RunInWindow, EndsWhenTheCoreStops) {
  options.upgradeFrom = 1;
  make();
  program().run();
  for (const auto& board : end().boards) {
    EXPECT_TRUE(board.flashMatches && board.isReported) << board.serialNumber;
  }
}

}  // namespace
}  // namespace karvex::app
