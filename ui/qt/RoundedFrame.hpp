#pragma once

#include <QPainterPath>
#include <QWidget>

namespace karvex::ui::qt {

/// In points.
inline constexpr int tablePadding = 10;
inline constexpr int tableRadius = 45;
/// Of the line around what has the keyboard.
inline constexpr int focusWidth = 2;

/// The rectangle with corners of that radius whose curvature has no step where they meet the edges.
QPainterPath roundedRectangle(const QRectF& rectangle, qreal radius);

/// Holds the table with its padding, and lays the window's ground over its corners.
class RoundedFrame final : public QWidget {
  Q_OBJECT

 public:
  /// Takes the widget over.
  RoundedFrame(QWidget* content, QWidget* parent);

 protected:
  void resizeEvent(QResizeEvent* event) override;
  /// The frame shows whether its content has the keyboard.
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QWidget* content_;
  QWidget* corners_;
};

}  // namespace karvex::ui::qt
