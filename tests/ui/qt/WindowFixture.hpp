#pragma once

#include <QPushButton>
#include <QTest>
#include <memory>
#include <vector>

#include "tests/ui/qt/RecordingActions.hpp"
#include "tests/ui/qt/SampleSnapshots.hpp"
#include "ui/qt/DeviceTable.hpp"
#include "ui/qt/MainWindow.hpp"

namespace karvex::ui::qt {

/// The real window on the screen of the test, with actions that are written down.
struct WindowFixture {
  RecordingActions actions;
  upgrade::LoadProgress progress = samples::progress();
  std::vector<Leaving> closeRequests;
  MainWindow window{
      {actions, [this] { return progress; }, [this](Leaving leaving) { closeRequests.push_back(leaving); }}};

  explicit WindowFixture(const Snapshot& snapshot) {
    window.draw(snapshot);
    window.show();
    window.activateWindow();
    const bool hasDialog = snapshot.alert || snapshot.showsDeviceExplorer;
    if (!QTest::qWaitFor([&] {
          auto* active = QApplication::activeWindow();
          return active != nullptr && (active == &window) != hasDialog;
        })) {
      throw std::runtime_error("the window doesn't come up");
    }
    actions.calls.clear();  // Without the appearance.
  }

  DeviceTable& table() { return *window.findChild<DeviceTable*>(); }
  QPushButton& button(const char* name) { return *window.findChild<QPushButton*>(QLatin1String(name)); }

  /// The middle of a cell, in the table's viewport.
  QPoint placeOf(int row, int column) {
    return table().visualRect(table().model()->index(row, column)).center();
  }
  void clickRow(int row) {
    QTest::mouseClick(table().viewport(), Qt::LeftButton, Qt::NoModifier, placeOf(row, 0));
  }
  /// The one selected row, or -1.
  int selectedRow() {
    const auto rows = table().selectionModel()->selectedRows();
    return rows.size() == 1 ? rows.front().row() : -1;
  }
};

}  // namespace karvex::ui::qt
