#include "ui/qt/TableHeader.hpp"

#include <QPainter>
#include <algorithm>

#include "ui/qt/CellDelegate.hpp"
#include "ui/qt/DeviceTableModel.hpp"
#include "ui/qt/Palette.hpp"

namespace karvex::ui::qt {
namespace {

/// Above and below the titles; the table's rounded corners end behind it.
constexpr int verticalPadding = 12;

int besideText(int section) {
  return leftPaddingOf(section) + cellPadding + 1;
}

}  // namespace

TableHeader::TableHeader(QWidget* parent) : QHeaderView(Qt::Horizontal, parent) {
  setSectionsClickable(false);
  setHighlightSections(false);
  setMinimumSectionSize(60);
}

QFont TableHeader::titleFont() const {
  auto titles = font();
  titles.setWeight(QFont::DemiBold);
  return titles;
}

QColor TableHeader::ground() const {
  return mix(palette().color(QPalette::Base), palette().color(QPalette::Text), 0.07);
}

QString TableHeader::titleOf(int section) const {
  return model()->headerData(section, Qt::Horizontal).toString();
}

QSize TableHeader::sizeHint() const {
  const QFontMetrics metrics(titleFont());
  bool isOneLine = true;
  for (int section = 0; section < static_cast<int>(Column::status); ++section) {
    isOneLine = isOneLine && sectionSize(section) >= sectionSizeFromContents(section).width();
  }
  return {QHeaderView::sizeHint().width(),
          (isOneLine ? metrics.height() : 2 * metrics.lineSpacing()) + 2 * verticalPadding};
}

int TableHeader::leastWidthOf(int section) const {
  int widest = 0;
  for (const auto& word : titleOf(section).split(u' ')) {
    widest = std::max(widest, QFontMetrics(titleFont()).horizontalAdvance(word));
  }
  return widest + besideText(section);
}

QSize TableHeader::sectionSizeFromContents(int section) const {
  const QFontMetrics metrics(titleFont());
  return {metrics.horizontalAdvance(titleOf(section)) + besideText(section), metrics.height()};
}

/// Beside the last section, too.
void TableHeader::paintEvent(QPaintEvent* event) {
  {
    QPainter painter(viewport());
    painter.fillRect(viewport()->rect(), ground());
  }
  QHeaderView::paintEvent(event);
}

void TableHeader::paintSection(QPainter* painter, const QRect& rect, int section) const {
  const bool isCentred = section == static_cast<int>(Column::status);
  const auto left = isCentred ? statusTextLeft : leftPaddingOf(section);
  const auto right = isCentred ? statusColumnWidth - statusTextLeft - statusTextWidth : cellPadding;
  const auto room = rect.adjusted(left, 0, -right, 0);
  painter->save();
  painter->fillRect(rect, ground());
  painter->setFont(titleFont());
  painter->setPen(palette().color(QPalette::Text));
  const auto alignment = isCentred ? Qt::AlignCenter : Qt::AlignVCenter | Qt::AlignLeft;
  const auto title = titleOf(section);
  const bool isOneLine = QFontMetrics(titleFont()).horizontalAdvance(title) <= room.width();
  painter->drawText(room, static_cast<int>(alignment) | (isOneLine ? Qt::TextSingleLine : Qt::TextWordWrap),
                    title);
  painter->restore();
}

}  // namespace karvex::ui::qt
