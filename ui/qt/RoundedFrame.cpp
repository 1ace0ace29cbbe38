#include "ui/qt/RoundedFrame.hpp"

#include <QEvent>
#include <QPainter>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "ui/qt/Palette.hpp"

namespace karvex::ui::qt {
namespace {

/// Lies over the content, and lets the mouse through.
class Corners final : public QWidget {
 public:
  Corners(QWidget* content, QWidget* parent) : QWidget(parent), content_(content) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    setFocusPolicy(Qt::NoFocus);
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const auto shape = roundedRectangle(rect(), tableRadius);
    QPainterPath outside;
    outside.addRect(rect());
    const auto ground = palette().color(QPalette::Window);
    painter.fillPath(outside.subtracted(shape), ground);
    const auto width = content_->hasFocus() ? focusWidth : 1;
    painter.setPen(QPen(lineColour(), width));
    const auto inset = width / 2.0;
    painter.drawPath(roundedRectangle(QRectF(rect()).adjusted(inset, inset, -inset, -inset), tableRadius));
  }

 private:
  /// With the keyboard, one that stands out from what is on either side of the line.
  QColor lineColour() const {
    const auto outside = palette().color(QPalette::Window);
    if (!content_->hasFocus()) {
      return mix(outside, palette().color(QPalette::WindowText), 0.22);
    }
    const auto highlight = palette().color(QPalette::Active, QPalette::Highlight);
    return withContrast(withContrast(highlight, outside, markContrast), palette().color(QPalette::Base),
                        markContrast);
  }

  QWidget* content_;
};

}  // namespace

QPainterPath roundedRectangle(const QRectF& rectangle, qreal radius) {
  // A superellipse in each corner: it leaves the edges without curvature, further out than a circle, and cuts
  // as much off the corner's diagonal as a circle of that radius.
  constexpr qreal reach = 1.528;
  constexpr qreal exponent = 3.26;
  constexpr int points = 24;
  const auto extent = std::min({radius * reach, rectangle.width() / 2, rectangle.height() / 2});
  const auto inset = [extent](int point) {
    const auto angle = static_cast<qreal>(point) / points * std::acos(0.0);
    return extent * (1 - std::pow(std::sin(angle), 2 / exponent));
  };
  QPolygonF outline;
  const auto addCorner = [&](QPointF corner, qreal x, qreal y, bool isReversed) {
    for (int step = 0; step <= points; ++step) {
      const auto point = isReversed ? points - step : step;
      outline << QPointF(corner.x() + x * inset(points - point), corner.y() + y * inset(point));
    }
  };
  addCorner(rectangle.topLeft(), 1, 1, false);
  addCorner(rectangle.topRight(), -1, 1, true);
  addCorner(rectangle.bottomRight(), -1, -1, false);
  addCorner(rectangle.bottomLeft(), 1, -1, true);
  QPainterPath path;
  path.addPolygon(outline);
  path.closeSubpath();
  return path;
}

RoundedFrame::RoundedFrame(QWidget* content, QWidget* parent)
    : QWidget(parent), content_(content), corners_(new Corners(content, this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(tablePadding, tablePadding, tablePadding, tablePadding);
  layout->addWidget(content_);
  corners_->raise();
  content_->installEventFilter(this);
}

bool RoundedFrame::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) {
    corners_->update();
  }
  return QWidget::eventFilter(watched, event);
}

void RoundedFrame::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  corners_->setGeometry(rect().adjusted(tablePadding, tablePadding, -tablePadding, -tablePadding));
}

}  // namespace karvex::ui::qt
