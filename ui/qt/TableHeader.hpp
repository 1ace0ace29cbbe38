#pragma once

#include <QHeaderView>

namespace karvex::ui::qt {

/// The titles of the table's columns, flat, in line with the cells below them. Where a column is narrower
/// than its title, the title's words are below each other.
class TableHeader final : public QHeaderView {
  Q_OBJECT

 public:
  explicit TableHeader(QWidget* parent);

  QSize sizeHint() const override;
  /// What the title asks for with its words below each other, in points.
  int leastWidthOf(int section) const;
  /// What the titles stand on.
  QColor ground() const;

 protected:
  void paintSection(QPainter* painter, const QRect& rect, int section) const override;
  void paintEvent(QPaintEvent* event) override;
  QSize sectionSizeFromContents(int section) const override;

 private:
  QFont titleFont() const;
  QString titleOf(int section) const;
};

}  // namespace karvex::ui::qt
