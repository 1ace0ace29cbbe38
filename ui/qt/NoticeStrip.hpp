#pragma once

#include <QLabel>
#include <QStringList>
#include <QWidget>

#include "ui/Snapshot.hpp"

namespace karvex::ui::qt {

/// What the window has to say without a dialog, between the instruction and the table: why it doesn't close,
/// and why a run has stopped. Hidden when there is nothing to say. An assistive tool reads it out when it
/// changes; its text can be selected and copied, by keyboard too.
class NoticeStrip final : public QWidget {
  Q_OBJECT

 public:
  explicit NoticeStrip(QWidget* parent);

  /// One line for each notice.
  void show(const QStringList& notices, Tone tone);

 protected:
  void paintEvent(QPaintEvent* event) override;
  /// The strip shows whether its text has the keyboard.
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QLabel* text_;
  Tone tone_ = Tone::orange;
};

}  // namespace karvex::ui::qt
