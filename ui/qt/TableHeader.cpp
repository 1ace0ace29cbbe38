#include "ui/qt/TableHeader.hpp"

#include <QPainter>

#include "ui/qt/CellDelegate.hpp"
#include "ui/qt/DeviceTableModel.hpp"
#include "ui/qt/Shades.hpp"

namespace karvex::ui::qt {
namespace {

/// Above and below the titles; the table's rounded corners end behind it.
constexpr int verticalPadding = 12;

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

QSize TableHeader::sizeHint() const {
  return {QHeaderView::sizeHint().width(), QFontMetrics(titleFont()).height() + 2 * verticalPadding};
}

QSize TableHeader::sectionSizeFromContents(int section) const {
  const auto title = model()->headerData(section, Qt::Horizontal).toString();
  return {QFontMetrics(titleFont()).horizontalAdvance(title) + leftPaddingOf(section) + cellPadding + 1,
          sizeHint().height()};
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
  const auto title = model()->headerData(section, Qt::Horizontal).toString();
  painter->save();
  painter->fillRect(rect, ground());
  painter->setFont(titleFont());
  painter->setPen(palette().color(QPalette::Text));
  painter->drawText(room, static_cast<int>(isCentred ? Qt::AlignCenter : Qt::AlignVCenter | Qt::AlignLeft),
                    QFontMetrics(titleFont()).elidedText(title, Qt::ElideRight, room.width()));
  painter->restore();
}

}  // namespace karvex::ui::qt
