#pragma once

#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <functional>

#include "ui/QuitRequest.hpp"
#include "ui/Snapshot.hpp"
#include "ui/UserActions.hpp"
#include "upgrade/LoadProgress.hpp"

namespace karvex::ui::qt {

class ActionRow;
class AlertBox;
class NoticeStrip;
class DeviceTable;
class RoundedFrame;
class SyncSheet;

/// What the window works with. All of it is used on the toolkit's thread.
struct WindowLinks {
  UserActions& actions;
  /// How far the load under way has come; asked while a snapshot has a row that shows it.
  std::function<upgrade::LoadProgress()> progress;
  /// The window is to be closed, and shows nothing that stands against it. Whoever finds that nothing does
  /// calls closeForGood(); asked again with each further snapshot until then.
  std::function<void(Leaving)> askToClose;
};

/// The main window: draws snapshots and hands on what the user does. The toolkit's thread.
class MainWindow final : public QWidget {
  Q_OBJECT

 public:
  explicit MainWindow(WindowLinks links);

  void draw(const Snapshot& snapshot);
  /// As the user's wish to close, but no failure keeps the window: the system ends, or somebody without a
  /// screen wants it.
  void closeByOrder();
  void closeForGood();
  /// In front of the other windows and with the keyboard.
  void bringToFront();

 protected:
  void showEvent(QShowEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void fitToFont();
  void drawDialogs();
  void drawAlert();
  void dismissAlert();
  void drawSheet();
  void followWish();
  void drawNotices();
  void drawProgress();

  WindowLinks links_;
  Snapshot snapshot_;
  ActionRow* row_;
  NoticeStrip* notices_;
  DeviceTable* table_;
  QPointer<AlertBox> alert_;
  QPointer<SyncSheet> sheet_;
  QTimer progressTimer_;
  QuitRequest wish_;
  bool hasAppeared_ = false;
  bool isOnScreen_ = false;  ///< it has a place, so that a dialog can be over it
  bool closesForGood_ = false;
};

}  // namespace karvex::ui::qt
