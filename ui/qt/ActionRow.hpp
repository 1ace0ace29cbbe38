#pragma once

#include <QPushButton>
#include <QWidget>

#include "ui/Snapshot.hpp"
#include "ui/UserActions.hpp"

namespace karvex::ui::qt {

/// The row above the table: what to do, and the three buttons.
class ActionRow final : public QWidget {
  Q_OBJECT

 public:
  /// The actions must outlive the row.
  ActionRow(UserActions& actions, QWidget* parent);

  void draw(const Snapshot& snapshot);

 private:
  QPushButton* upload_;
  QPushButton* refresh_;
  QPushButton* sync_;
};

}  // namespace karvex::ui::qt
