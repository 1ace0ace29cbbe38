#include "ui/qt/MainWindow.hpp"

#include <QCloseEvent>
#include <QScreen>
#include <QShortcut>
#include <QVBoxLayout>
#include <QWindow>
#include <algorithm>
#include <chrono>
#include <utility>

#include "ui/Texts.hpp"
#include "ui/qt/ActionRow.hpp"
#include "ui/qt/AlertBox.hpp"
#include "ui/qt/DeviceTable.hpp"
#include "ui/qt/NoticeStrip.hpp"
#include "ui/qt/RoundedFrame.hpp"
#include "ui/qt/SymbolIcon.hpp"
#include "ui/qt/SyncSheet.hpp"
#include "ui/qt/Text.hpp"

namespace karvex::ui::qt {
namespace {

/// With a font of the usual height; a larger one takes a larger window, as far as the screen is one.
constexpr QSize usualSize{1080, 620};
constexpr QSize leastSize{720, 340};
constexpr qreal usualLineSpacing = 18;
/// What a desktop puts around the window, and beside it.
constexpr QSize aroundWindow{0, 40};
constexpr int windowPadding = 16;

/// How often the bar of a load is drawn anew while it moves.
constexpr std::chrono::milliseconds progressInterval{80};

}  // namespace

MainWindow::MainWindow(WindowLinks links)
    : links_(std::move(links)),
      row_(new ActionRow(links_.actions, this)),
      notices_(new NoticeStrip(this)),
      table_(new DeviceTable([this](const auto& device) { links_.actions.select(device); }, this)) {
  setWindowTitle(QStringLiteral("Karvex"));
  setWindowIcon(programIcon());
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(windowPadding, windowPadding, windowPadding, windowPadding);
  layout->addWidget(row_);
  layout->addWidget(notices_);
  layout->addWidget(new RoundedFrame(table_, this), 1);
  fitToFont();
  table_->setFocus();
  connect(new QShortcut(Qt::CTRL | Qt::Key_Q, this), &QShortcut::activated, this, &QWidget::close);
  progressTimer_.setInterval(progressInterval);
  connect(&progressTimer_, &QTimer::timeout, this, &MainWindow::drawProgress);
}

void MainWindow::fitToFont() {
  const auto scale = std::max(1.0, fontMetrics().lineSpacing() / usualLineSpacing);
  const auto most = screen()->availableGeometry().size() - aroundWindow;
  setMinimumSize((leastSize * scale).boundedTo(most));
  resize((usualSize * scale).boundedTo(most));
}

void MainWindow::draw(const Snapshot& snapshot) {
  snapshot_ = snapshot;
  row_->draw(snapshot_);
  table_->draw(snapshot_);
  drawProgress();
  drawDialogs();
  wish_.see(snapshot_);
  followWish();
}

void MainWindow::drawProgress() {
  if (!table_->hasBar()) {
    progressTimer_.stop();
    return;
  }
  table_->drawProgress(links_.progress());
  if (!progressTimer_.isActive()) {
    progressTimer_.start();
  }
}

/// A dialog that came before the window has its place would stay somewhere else.
void MainWindow::drawDialogs() {
  if (isOnScreen_) {
    drawSheet();
    drawAlert();
  }
}

void MainWindow::drawAlert() {
  if (alert_ && !(snapshot_.alert && alert_->shows(*snapshot_.alert))) {
    dismissAlert();
  }
  if (!alert_ && snapshot_.alert) {
    alert_ = new AlertBox(*snapshot_.alert, links_.actions, sheet_ ? static_cast<QWidget*>(sheet_) : this);
    alert_->open();
  }
}

void MainWindow::dismissAlert() {
  if (alert_) {
    alert_->dismiss();
    alert_ = nullptr;
  }
}

void MainWindow::drawSheet() {
  if (sheet_ && !snapshot_.showsDeviceExplorer) {
    dismissAlert();  // It would go with the sheet that it belongs to; drawAlert() makes another one.
    sheet_->dismiss();
    sheet_ = nullptr;
  } else if (!sheet_ && snapshot_.showsDeviceExplorer) {
    sheet_ = new SyncSheet(links_.actions, this);
    sheet_->open();
  }
  if (sheet_) {
    sheet_->draw(snapshot_);
  }
}

/// Says why the window stays, or asks for its end.
void MainWindow::followWish() {
  drawNotices();
  if (const auto leaving = wish_.due()) {
    links_.askToClose(*leaving);
  }
}

void MainWindow::drawNotices() {
  QStringList notices;
  if (wish_.isHeldBack()) {
    notices << qtText(texts::closingHeldBack);
  }
  if (!snapshot_.stopNotice.empty()) {
    notices << lineText(snapshot_.stopNotice);
  }
  notices_->show(notices, snapshot_.stopNotice.empty() ? Tone::orange : Tone::red);
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Expose && windowHandle()->isExposed() && !std::exchange(isOnScreen_, true)) {
    QTimer::singleShot(0, this, &MainWindow::drawDialogs);
  }
  return QWidget::eventFilter(watched, event);
}

void MainWindow::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  windowHandle()->installEventFilter(this);
  if (!std::exchange(hasAppeared_, true)) {
    links_.actions.appear();
  }
}

/// Only the main queue knows for sure whether a run is going: a click on Upload may be on its way there.
void MainWindow::closeEvent(QCloseEvent* event) {
  if (closesForGood_) {
    return QWidget::closeEvent(event);
  }
  event->ignore();
  wish_.make(Leaving::byUser);
  followWish();
}

void MainWindow::closeByOrder() {
  wish_.make(Leaving::byOrder);
  followWish();
}

void MainWindow::closeForGood() {
  closesForGood_ = true;
  close();
}

void MainWindow::bringToFront() {
  setWindowState((windowState() & ~Qt::WindowMinimized) | Qt::WindowActive);
  show();
  raise();
  activateWindow();
}

}  // namespace karvex::ui::qt
