#pragma once

#include <QDialog>
#include <QProgressBar>

#include "ui/Snapshot.hpp"
#include "ui/UserActions.hpp"

namespace karvex::ui::qt {

/// The sheet that sends the equipment report, over the window. It closes when the snapshot has no sheet any
/// more.
class SyncSheet final : public QDialog {
  Q_OBJECT

 public:
  /// The actions must outlive the sheet.
  SyncSheet(UserActions& actions, QWidget* window);

  void draw(const Snapshot& snapshot);
  /// Takes the sheet off the screen and deletes it.
  void dismiss();

  /// The close button, Escape and the window's own: all of them ask for the same.
  void done(int result) override;

 private:
  UserActions& actions_;
  QProgressBar* busy_;
};

}  // namespace karvex::ui::qt
