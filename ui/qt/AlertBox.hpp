#pragma once

#include <QDialog>

#include "ui/Snapshot.hpp"
#include "ui/UserActions.hpp"

namespace karvex::ui::qt {

/// The dialog of an alert, over the window. Its OK, also by Enter or Escape, is handed on, and the dialog
/// stays until the snapshot has no alert any more: the window shows the state that there is, not the one that
/// is to come. (A QMessageBox is gone as soon as it is answered.) The copy key takes the title and the
/// message.
class AlertBox final : public QDialog {
  Q_OBJECT

 public:
  /// The actions must outlive the box.
  AlertBox(const AlertText& alert, UserActions& actions, QWidget* window);

  bool shows(const AlertText& alert) const { return alert == alert_; }
  /// Takes the box off the screen and deletes it.
  void dismiss();

  /// OK, Escape and the close button of the box's window: all of them answer the alert.
  void done(int result) override;

 protected:
  void showEvent(QShowEvent* event) override;

 private:
  void copyText();

  AlertText alert_;
  UserActions& actions_;
};

}  // namespace karvex::ui::qt
