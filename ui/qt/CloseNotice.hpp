#pragma once

#include <QWidget>

namespace karvex::ui::qt {

/// Why the window doesn't close, between the instruction and the table. Hidden at first; is read out by an
/// assistive tool when it is shown.
class CloseNotice final : public QWidget {
  Q_OBJECT

 public:
  explicit CloseNotice(QWidget* parent);

 protected:
  void showEvent(QShowEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace karvex::ui::qt
