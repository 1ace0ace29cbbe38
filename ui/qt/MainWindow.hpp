#pragma once

#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <functional>

#include "ui/Snapshot.hpp"
#include "ui/UserActions.hpp"
#include "upgrade/LoadProgress.hpp"

namespace karvex::ui::qt {

class ActionRow;
class AlertBox;
class CloseNotice;
class DeviceTable;
class RoundedFrame;
class SyncSheet;

/// What the window works with. All of it is used on the toolkit's thread.
struct WindowLinks {
  UserActions& actions;
  /// How far the load under way has come; asked while a snapshot has a row that shows it.
  std::function<upgrade::LoadProgress()> progress;
  /// The user wants to close the window. Whoever finds that nothing stands against it calls closeForGood();
  /// asked again with each further snapshot until then.
  std::function<void()> askToClose;
};

/// The main window: draws snapshots and hands on what the user does. The toolkit's thread.
class MainWindow final : public QWidget {
  Q_OBJECT

 public:
  explicit MainWindow(WindowLinks links);

  void draw(const Snapshot& snapshot);
  void closeForGood();
  /// In front of the other windows and with the keyboard.
  void bringToFront();

 protected:
  void showEvent(QShowEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  void drawAlert();
  void drawSheet();
  void drawCloseNotice();
  void drawProgress();

  WindowLinks links_;
  Snapshot snapshot_;
  ActionRow* row_;
  CloseNotice* closeNotice_;
  DeviceTable* table_;
  QPointer<AlertBox> alert_;
  QPointer<SyncSheet> sheet_;
  QTimer progressTimer_;
  bool hasAppeared_ = false;
  bool wantsToClose_ = false;
  bool closesForGood_ = false;
};

}  // namespace karvex::ui::qt
