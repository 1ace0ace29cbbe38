#include "ui/qt/NoticeStrip.hpp"

#include <QAccessible>
#include <QEvent>
#include <QPainter>
#include <QVBoxLayout>

#include "ui/qt/Palette.hpp"
#include "ui/qt/RoundedFrame.hpp"

namespace karvex::ui::qt {
namespace {

constexpr int above = 10;
constexpr int textPadding = 10;
constexpr int radius = 10;
constexpr double toneShare = 0.22;

}  // namespace

NoticeStrip::NoticeStrip(QWidget* parent) : QWidget(parent), text_(new QLabel(this)) {
  text_->setTextFormat(Qt::PlainText);
  text_->setWordWrap(true);
  text_->setAlignment(Qt::AlignCenter);
  text_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  text_->setFocusPolicy(Qt::StrongFocus);
  text_->installEventFilter(this);
  auto* layout = new QVBoxLayout(this);
  // In line with the table below.
  layout->setContentsMargins(tablePadding + textPadding, above + textPadding, tablePadding + textPadding,
                             textPadding);
  layout->addWidget(text_);
  hide();
}

void NoticeStrip::show(const QStringList& notices, Tone tone) {
  const auto text = notices.join(u'\n');
  tone_ = tone;
  if (text == text_->text()) {
    return;
  }
  text_->setText(text);
  setAccessibleName(text);
  setVisible(!text.isEmpty());
  if (!text.isEmpty()) {
    QAccessibleEvent spoken(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&spoken);
  }
}

bool NoticeStrip::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) {
    update();
  }
  return QWidget::eventFilter(watched, event);
}

void NoticeStrip::paintEvent(QPaintEvent*) {
  const auto ground = palette().color(QPalette::Window);
  const auto shade = shadeOf(tone_, ground, markContrast);
  const auto width = text_->hasFocus() ? focusWidth : 1;
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(shade, width));
  painter.setBrush(mix(ground, shade, toneShare));
  const auto frame = QRectF(rect()).adjusted(tablePadding, above, -tablePadding, 0);
  const auto inset = width / 2.0;
  painter.drawPath(roundedRectangle(frame.adjusted(inset, inset, -inset, -inset), radius));
}

}  // namespace karvex::ui::qt
