#include "ui/qt/CloseNotice.hpp"

#include <QAccessible>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

#include "ui/Texts.hpp"
#include "ui/qt/RoundedFrame.hpp"
#include "ui/qt/Shades.hpp"
#include "ui/qt/Text.hpp"

namespace karvex::ui::qt {
namespace {

constexpr int above = 10;
constexpr int textPadding = 10;
constexpr int radius = 10;
constexpr double toneShare = 0.22;

}  // namespace

CloseNotice::CloseNotice(QWidget* parent) : QWidget(parent) {
  auto* text = new QLabel(qtText(texts::closingHeldBack), this);
  text->setTextFormat(Qt::PlainText);
  text->setWordWrap(true);
  text->setAlignment(Qt::AlignCenter);
  auto* layout = new QVBoxLayout(this);
  // In line with the table below.
  layout->setContentsMargins(tablePadding + textPadding, above + textPadding, tablePadding + textPadding,
                             textPadding);
  layout->addWidget(text);
  setAccessibleName(text->text());
  hide();
}

void CloseNotice::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  QAccessibleEvent spoken(this, QAccessible::Alert);
  QAccessible::updateAccessibility(&spoken);
}

void CloseNotice::paintEvent(QPaintEvent*) {
  const auto ground = palette().color(QPalette::Window);
  const auto shade = shadeOf(Tone::orange, ground, markContrast);
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(shade);
  painter.setBrush(mix(ground, shade, toneShare));
  const auto frame =
      QRectF(rect()).adjusted(tablePadding, above, -tablePadding, 0).adjusted(0.5, 0.5, -0.5, -0.5);
  painter.drawPath(roundedRectangle(frame, radius));
}

}  // namespace karvex::ui::qt
