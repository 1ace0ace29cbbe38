#include "ui/qt/CellDelegate.hpp"

#include <QPainter>
#include <algorithm>

#include "ui/qt/DeviceTableModel.hpp"
#include "ui/qt/Palette.hpp"

namespace karvex::ui::qt {
namespace {

constexpr double selectionShare = 0.24;
constexpr double unfocusedSelectionShare = 0.14;
constexpr qreal barWidth = 140;
constexpr qreal barHeight = 4;
/// Between the lower edges of the bar and the cell.
constexpr qreal barBottom = 5;
constexpr qreal ringWidth = 3;
/// What a long text asks for; it gets more where the column is wider.
constexpr int mostCharactersAsked = 27;

/// A disc for a device that is there and a ring for one that isn't, so that the colour doesn't carry it
/// alone.
void paintMark(QPainter& painter, const QRectF& square, Tone tone, const QColor& ground) {
  const auto shade = shadeOf(tone, ground, markContrast);
  if (tone == Tone::green) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(shade);
    painter.drawEllipse(square);
  } else {
    painter.setPen(QPen(shade, ringWidth));
    painter.setBrush(Qt::NoBrush);
    constexpr qreal inset = ringWidth / 2;
    painter.drawEllipse(square.adjusted(inset, inset, -inset, -inset));
  }
}

/// `piece` are the ends of what is filled, from 0 to 1.
void paintBar(QPainter& painter, const QRectF& groove, const QPointF& piece, const QColor& ground,
              const QPalette& palette) {
  painter.setPen(Qt::NoPen);
  painter.setBrush(mix(ground, palette.color(QPalette::Text), 0.22));
  painter.drawRoundedRect(groove, barHeight / 2, barHeight / 2);
  const QRectF filled(groove.left() + groove.width() * piece.x(), groove.top(),
                      groove.width() * (piece.y() - piece.x()), groove.height());
  painter.setClipRect(filled);
  painter.setBrush(palette.color(QPalette::Active, QPalette::Highlight));
  painter.drawRoundedRect(groove, barHeight / 2, barHeight / 2);
  painter.setClipping(false);
}

/// The status column is as wide as it is: where the font is too large for its words, they are written
/// smaller.
QFont fittingFont(QFont font, const QString& text, const QRectF& room) {
  constexpr qreal step = 0.5;
  constexpr qreal least = 7;  // Points.
  const auto fits = [&] {
    const auto needed =
        QFontMetricsF(font).boundingRect(room, Qt::AlignCenter | Qt::TextWordWrap, text).size();
    return needed.width() <= room.width() && needed.height() <= room.height();
  };
  while (font.pointSizeF() > least && !fits()) {
    font.setPointSizeF(font.pointSizeF() - step);
  }
  return font;
}

}  // namespace

int leftPaddingOf(int column) {
  return column == 0 ? firstCellPadding : cellPadding;
}

QColor CellDelegate::groundOf(const QStyleOptionViewItem& option) {
  const auto base = option.palette.color(QPalette::Base);
  if ((option.state & QStyle::State_Selected) == 0) {
    return base;
  }
  const bool hasFocus = option.widget != nullptr && option.widget->hasFocus();
  return mix(base, option.palette.color(QPalette::Active, QPalette::Highlight),
             hasFocus ? selectionShare : unfocusedSelectionShare);
}

QColor CellDelegate::textColourOf(const QStyleOptionViewItem& option, const QModelIndex& index) {
  const auto tone = index.data(DeviceTableModel::toneRole);
  return tone.isValid() ? shadeOf(static_cast<Tone>(tone.toInt()), groundOf(option))
                        : option.palette.color(QPalette::Text);
}

void CellDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const {
  auto cell = option;
  initStyleOption(&cell, index);
  const auto room = cell.rect.adjusted(leftPaddingOf(index.column()), 0, -cellPadding, 0);
  painter->save();
  painter->fillRect(cell.rect, groundOf(option));
  painter->setFont(cell.font);
  painter->setPen(textColourOf(option, index));
  painter->drawText(room, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
                    cell.fontMetrics.elidedText(cell.text, Qt::ElideRight, room.width()));
  painter->restore();
}

QSize CellDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
  auto cell = option;
  initStyleOption(&cell, index);
  const auto most = mostCharactersAsked * cell.fontMetrics.averageCharWidth();
  return {std::min(cell.fontMetrics.horizontalAdvance(cell.text), most) + leftPaddingOf(index.column()) +
              cellPadding + 1,
          cell.fontMetrics.height()};
}

void StatusDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                           const QModelIndex& index) const {
  auto cell = option;
  initStyleOption(&cell, index);
  const auto ground = groundOf(option);
  const auto bar = index.data(DeviceTableModel::barRole);
  const QRectF area = cell.rect;
  const QRectF mark(area.left(), area.center().y() - markSize / 2.0, markSize, markSize);
  const QRectF text(area.left() + statusTextLeft, area.top(), statusTextWidth, area.height());

  painter->save();
  painter->setRenderHint(QPainter::Antialiasing);
  painter->fillRect(area, ground);
  paintMark(*painter, mark, static_cast<Tone>(index.data(DeviceTableModel::markRole).toInt()), ground);
  if (bar.isValid()) {
    const QRectF groove(text.center().x() - barWidth / 2, text.bottom() - barBottom - barHeight, barWidth,
                        barHeight);
    paintBar(*painter, groove, bar.toPointF(), ground, option.palette);
  }
  painter->setFont(fittingFont(cell.font, cell.text, text));
  painter->setPen(textColourOf(option, index));
  painter->drawText(text, Qt::AlignCenter | Qt::TextWordWrap, cell.text);
  painter->restore();
}

}  // namespace karvex::ui::qt
