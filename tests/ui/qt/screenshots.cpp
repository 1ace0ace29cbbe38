// Draws the window in its usual states and writes the pictures into a directory: window_screenshots DIRECTORY
// [SCENE...]. Everything is drawn on the offscreen platform; QT_SCALE_FACTOR=2 gives the pictures of a dense
// display.

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QPainter>
#include <QPushButton>
#include <QStyle>
#include <QStyleFactory>
#include <QTest>
#include <functional>
#include <iostream>
#include <vector>

#include "tests/ui/qt/RecordingActions.hpp"
#include "tests/ui/qt/SampleSnapshots.hpp"
#include "ui/qt/MainWindow.hpp"

namespace {

using namespace karvex::ui;
using namespace karvex::ui::qt;

QPalette lightPalette() {
  return QStyleFactory::create(QStringLiteral("Fusion"))->standardPalette();
}

QPalette darkPalette() {
  QPalette palette(QColor(0x35, 0x37, 0x3b), QColor(0x25, 0x27, 0x2a));
  palette.setColor(QPalette::Base, QColor(0x1b, 0x1c, 0x1f));
  palette.setColor(QPalette::AlternateBase, QColor(0x25, 0x27, 0x2a));
  palette.setColor(QPalette::Highlight, QColor(0x3d, 0x8b, 0xd4));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  palette.setColor(QPalette::ToolTipBase, QColor(0x25, 0x27, 0x2a));
  palette.setColor(QPalette::ToolTipText, Qt::white);
  return palette;
}

/// The windows as a desktop shows them: the dialog in the middle of the window, the window itself dimmed.
QImage pictureOf(QWidget& window) {
  auto picture = window.grab();
  QPainter painter(&picture);
  for (auto* dialog : window.findChildren<QDialog*>()) {
    if (!dialog->isVisible()) {
      continue;
    }
    painter.fillRect(window.rect(), QColor(0, 0, 0, 70));
    QRect place(QPoint(), dialog->size());
    place.moveCenter(window.rect().center());
    painter.setPen(QColor(0, 0, 0, 160));
    painter.drawRect(place.adjusted(-1, -1, 0, 0));
    painter.drawPixmap(place.topLeft(), dialog->grab());
  }
  return picture.toImage();
}

struct Scene {
  QString name;
  Snapshot snapshot;
  std::function<void(MainWindow&)> prepare = [](MainWindow&) {};
};

std::vector<Scene> scenes() {
  std::vector<Scene> all{
      {QStringLiteral("idle"), samples::idle()},
      {QStringLiteral("selected"), samples::selected()},
      {QStringLiteral("focus"), samples::selected(),
       [](MainWindow& window) {
         window.activateWindow();
         window.findChild<QPushButton*>(QStringLiteral("refresh"))->setFocus(Qt::TabFocusReason);
       }},
      {QStringLiteral("running"), samples::running()},
      {QStringLiteral("closing"), samples::running(), [](MainWindow& window) { window.close(); }},
      {QStringLiteral("sync"), samples::withSheet(false)},
      {QStringLiteral("sync-sending"), samples::withSheet(true)},
      {QStringLiteral("every-status"), samples::everyStatus(),
       [](MainWindow& window) { window.resize(window.minimumSize()); }},
      {QStringLiteral("every-status-large"), samples::everyStatus(),
       [](MainWindow& window) { window.resize(1300, 860); }},
  };
  for (const auto alert : karvex::upgrade::alertsInOrder) {
    all.push_back({QStringLiteral("alert-%1").arg(static_cast<int>(alert) + 1), samples::withAlert(alert)});
  }
  return all;
}

bool take(const Scene& scene, const QString& file) {
  RecordingActions actions;
  MainWindow window({actions, samples::progress, [](Leaving) {}});
  window.draw(scene.snapshot);
  window.show();
  if (!QTest::qWaitForWindowExposed(&window)) {
    return false;
  }
  scene.prepare(window);
  QApplication::processEvents();
  return pictureOf(window).save(file);
}

}  // namespace

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
  QApplication application(argc, argv);
  QApplication::setStyle(QStringLiteral("Fusion"));
  const auto arguments = QApplication::arguments();
  if (arguments.size() < 2) {
    std::cerr << "use: window_screenshots DIRECTORY [SCENE...]\n";
    return 2;
  }
  const QDir directory(arguments[1]);
  const auto wanted = arguments.mid(2);
  for (const auto& [palette, name] : {std::pair(lightPalette(), "light"), std::pair(darkPalette(), "dark")}) {
    QApplication::setPalette(palette);
    for (const auto& scene : scenes()) {
      const auto file = directory.filePath(scene.name + u'-' + QLatin1String(name) + QStringLiteral(".png"));
      if ((wanted.isEmpty() || wanted.contains(scene.name)) && !take(scene, file)) {
        std::cerr << "can't make " << file.toStdString() << '\n';
        return 1;
      }
    }
  }
  return 0;
}
