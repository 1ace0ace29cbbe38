// Draws the window in its usual states and writes the pictures into a directory: window_screenshots DIRECTORY
// POINTS [SCENE...], with the size of the font in points. The scene "contact" is all of them on one sheet.
// Everything is drawn on the offscreen platform; QT_SCALE_FACTOR=2 gives the pictures of a dense display.

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
#include <optional>
#include <utility>
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
  QSize size = {};  ///< none: the window's own
  std::function<void(MainWindow&)> prepare = [](MainWindow&) {};
  karvex::upgrade::LoadProgress progress = samples::progress();
};

std::vector<Scene> scenes() {
  /// The smallest screen that the window is made for, without what a desktop takes of it.
  constexpr QSize small{800, 440};
  const auto close = [](MainWindow& window) { window.close(); };
  const auto focusButton = [](MainWindow& window) {
    window.activateWindow();
    window.findChild<QPushButton*>(QStringLiteral("refresh"))->setFocus(Qt::TabFocusReason);
  };
  auto asking = samples::empty();
  asking.emptyText = "Asking the service for its list of devices...";
  std::vector<Scene> all{{"empty", samples::empty()},
                         {"asking", asking},
                         {"idle", samples::idle()},
                         {"selected", samples::selected()},
                         {"focus", samples::selected(), {}, focusButton},
                         {"before-first-block", samples::running(), {}, [](auto&) {}, {}},
                         {"running", samples::running()},
                         {"closing", samples::running(), {}, close},
                         {"stopped", samples::stopped()},
                         {"sync", samples::withSheet(false)},
                         {"sync-sending", samples::withSheet(true)},
                         {"every-status", samples::everyStatus(), {1300, 860}},
                         {"small", samples::everyStatus(), small},
                         {"small-stopped", samples::stopped(), small}};
  for (const auto alert : karvex::upgrade::alertsInOrder) {
    all.push_back({QStringLiteral("alert-%1").arg(static_cast<int>(alert) + 1), samples::withAlert(alert)});
  }
  return all;
}

std::optional<QImage> take(const Scene& scene) {
  RecordingActions actions;
  MainWindow window({actions, [&scene] { return scene.progress; }, [](Leaving) {}});
  window.draw(scene.snapshot);
  if (scene.size.isValid()) {
    window.resize(scene.size);
  }
  window.show();
  if (!QTest::qWaitForWindowExposed(&window)) {
    return std::nullopt;
  }
  QTest::qWait(1);  // Dialogs come after the window.
  scene.prepare(window);
  QApplication::processEvents();
  return pictureOf(window);
}

/// All of them, small, beside each other with their names.
QImage contactOf(const std::vector<std::pair<QString, QImage>>& pictures) {
  constexpr int columns = 4;
  constexpr QSize cell{360, 250};
  constexpr int nameHeight = 20;
  const auto rows = (static_cast<int>(pictures.size()) + columns - 1) / columns;
  QImage sheet(cell.width() * columns, cell.height() * rows, QImage::Format_RGB32);
  sheet.fill(Qt::gray);
  QPainter painter(&sheet);
  painter.setFont(QFont(QStringLiteral("Sans"), 9));
  for (int place = 0; const auto& [name, picture] : pictures) {
    const QPoint corner(place % columns * cell.width(), place / columns * cell.height());
    auto small =
        picture.scaled(cell - QSize(8, nameHeight + 4), Qt::KeepAspectRatio, Qt::SmoothTransformation);
    small.setDevicePixelRatio(1);
    painter.drawText(QRect(corner, QSize(cell.width(), nameHeight)), Qt::AlignCenter, name);
    painter.drawImage(corner + QPoint((cell.width() - small.width()) / 2, nameHeight), small);
    ++place;
  }
  return sheet;
}

/// The pictures of one palette. `end` is the end of their files' names.
bool takeAll(const QDir& directory, const QStringList& wanted, const QString& end) {
  constexpr int smallest = 0;  // Of PNG's qualities, which are all without loss.
  std::vector<std::pair<QString, QImage>> pictures;
  const auto isWanted = [&](const QString& name) { return wanted.isEmpty() || wanted.contains(name); };
  const auto fileOf = [&](const QString& name) { return directory.filePath(name + end); };
  const auto contact = QStringLiteral("contact");
  for (const auto& scene : scenes()) {
    if (!isWanted(scene.name) && !isWanted(contact)) {
      continue;
    }
    const auto picture = take(scene);
    if (!picture || (isWanted(scene.name) && !picture->save(fileOf(scene.name), "PNG", smallest))) {
      return false;
    }
    pictures.emplace_back(scene.name, *picture);
  }
  return !isWanted(contact) ||
         contactOf(pictures).convertToFormat(QImage::Format_RGB444).save(fileOf(contact), "PNG", smallest);
}

}  // namespace

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
  QApplication application(argc, argv);
  QApplication::setStyle(QStringLiteral("Fusion"));
  const auto arguments = QApplication::arguments();
  if (arguments.size() < 3) {
    std::cerr << "use: window_screenshots DIRECTORY POINTS [SCENE...]\n";
    return 2;
  }
  auto font = QApplication::font();
  const auto size = font.pointSize() == arguments[2].toInt() ? QString() : u'-' + arguments[2] + "pt";
  const auto scale = qApp->devicePixelRatio() == 1 ? QString() : QStringLiteral("@2x");
  font.setPointSize(arguments[2].toInt());
  QApplication::setFont(font);
  for (const auto& [palette, name] : {std::pair(lightPalette(), "light"), std::pair(darkPalette(), "dark")}) {
    QApplication::setPalette(palette);
    if (!takeAll(QDir(arguments[1]), arguments.mid(3), u'-' + QLatin1String(name) + size + scale + ".png")) {
      std::cerr << "can't make the pictures\n";
      return 1;
    }
  }
  return 0;
}
