#pragma once

#include <QStyledItemDelegate>

namespace karvex::ui::qt {

/// Measures of the table's cells, in points.
inline constexpr int statusColumnWidth = 180;
inline constexpr int statusTextWidth = 160;
inline constexpr int markSize = 10;
inline constexpr int statusTextLeft = markSize + (statusColumnWidth - markSize - statusTextWidth) / 2;
inline constexpr int cellPadding = 12;
/// The first column stands further in, clear of the table's rounded corners.
inline constexpr int firstCellPadding = 24;

int leftPaddingOf(int column);

/// Draws a cell of the device table: text in the colour of its tone, on a ground that stays quiet enough for
/// it when the row is selected.
class CellDelegate : public QStyledItemDelegate {
  Q_OBJECT

 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

 protected:
  static QColor groundOf(const QStyleOptionViewItem& option);
  static QColor textColourOf(const QStyleOptionViewItem& option, const QModelIndex& index);
};

/// Draws the status cell: the mark, the text in the middle of its width, and the bar of a load under way.
class StatusDelegate final : public CellDelegate {
  Q_OBJECT

 public:
  using CellDelegate::CellDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

}  // namespace karvex::ui::qt
