#include "ui/qt/DeviceTable.hpp"

#include <QEvent>
#include <QHeaderView>
#include <QPainter>
#include <algorithm>
#include <array>
#include <utility>

#include "ui/qt/CellDelegate.hpp"
#include "ui/qt/ColumnShares.hpp"
#include "ui/qt/DeviceTableModel.hpp"
#include "ui/qt/Palette.hpp"
#include "ui/qt/RoundedFrame.hpp"
#include "ui/qt/ShownSelection.hpp"
#include "ui/qt/TableHeader.hpp"
#include "ui/qt/Text.hpp"

namespace karvex::ui::qt {
namespace {

constexpr int statusColumn = static_cast<int>(Column::status);
constexpr int leastRowHeight = 44;
/// Room above and below two lines of status text.
constexpr int rowPadding = 10;

/// Keeps an end of the scroll bar clear of the table's rounded corners, and looks like what is beside it.
class ScrollBarEnd final : public QWidget {
 public:
  /// Without titles, it is the lower end.
  ScrollBarEnd(const TableHeader* titles, QWidget* parent) : QWidget(parent), titles_(titles) {
    setFixedHeight(tableRadius);
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Base));
    if (titles_ != nullptr) {
      painter.fillRect(0, 0, width(), titles_->height(), titles_->ground());
    }
  }

 private:
  const TableHeader* titles_;
};

}  // namespace

DeviceTable::DeviceTable(std::function<void(std::optional<foundation::Uuid>)> select, QWidget* parent)
    : QTableView(parent), model_(new DeviceTableModel(this)) {
  setModel(model_);
  selection_ = new ShownSelection(*model_, [this, select = std::move(select)](const QModelIndex& index) {
    select(model_->deviceAt(index));
  });
  setSelectionModel(selection_);
  setSelectionMode(SingleSelection);
  setSelectionBehavior(SelectRows);
  setEditTriggers(NoEditTriggers);
  setTabKeyNavigation(false);
  setShowGrid(false);
  setWordWrap(false);
  setCornerButtonEnabled(false);
  setFrameShape(NoFrame);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);  // The columns share the width that there is.
  setVerticalScrollMode(ScrollPerPixel);
  setItemDelegate(new CellDelegate(this));
  setItemDelegateForColumn(statusColumn, new StatusDelegate(this));
  setAccessibleName(tr("Devices"));
  describe();
  layOutColumns();
  setRowHeight();
}

void DeviceTable::layOutColumns() {
  auto* titles = new TableHeader(this);
  setHorizontalHeader(titles);
  verticalHeader()->hide();
  titles->setSectionResizeMode(QHeaderView::Fixed);
  titles->resizeSection(statusColumn, statusColumnWidth);
  addScrollBarWidget(new ScrollBarEnd(titles, this), Qt::AlignTop);
  addScrollBarWidget(new ScrollBarEnd(nullptr, this), Qt::AlignBottom);
}

void DeviceTable::shareWidth() {
  auto& titles = static_cast<TableHeader&>(*horizontalHeader());
  std::array<ColumnWish, sharingColumns> wishes;
  for (int column = 0; auto& wish : wishes) {
    wish = {.content = std::max(sizeHintForColumn(column), titles.leastWidthOf(column)),
            .title = titles.sectionSizeHint(column)};
    ++column;
  }
  const auto room = std::max(0, viewport()->width() - statusColumnWidth);
  for (int column = 0; const auto width : shareOut(room, wishes)) {
    titles.resizeSection(column++, width);
  }
  if (titles.height() != titles.sizeHint().height()) {  // They take another line, or one less.
    scheduleDelayedItemsLayout();
  }
}

void DeviceTable::setRowHeight() {
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->setDefaultSectionSize(
      std::max(leastRowHeight, 2 * fontMetrics().lineSpacing() + rowPadding));
}

void DeviceTable::draw(const Snapshot& snapshot) {
  const auto wasSelected = selection_->currentIndex();
  model_->draw(snapshot);
  shareWidth();
  drawEmptyText(lineText(snapshot.emptyText));
  const auto selected = model_->indexOf(snapshot.selected);
  selection_->showSelected(selected);
  if (selected.isValid() && selected != wasSelected) {
    scrollTo(selected);
  }
}

void DeviceTable::drawEmptyText(const QString& text) {
  if (text != emptyText_) {
    emptyText_ = text;
    describe();
    viewport()->update();
  }
}

void DeviceTable::describe() {
  setAccessibleDescription(emptyText_.isEmpty()
                               ? tr("The devices that can be upgraded. Choose one with the arrow keys.")
                               : emptyText_);
}

void DeviceTable::paintEvent(QPaintEvent* event) {
  QTableView::paintEvent(event);
  if (!emptyText_.isEmpty()) {
    QPainter painter(viewport());
    painter.setPen(shadeOf(Tone::gray, palette().color(QPalette::Base)));
    painter.drawText(viewport()->rect().adjusted(tableRadius, 0, -tableRadius, 0),
                     Qt::AlignCenter | Qt::TextWordWrap, emptyText_);
  }
}

void DeviceTable::drawProgress(const upgrade::LoadProgress& progress) {
  model_->setProgress(progress);
}

bool DeviceTable::hasBar() const {
  return model_->hasBar();
}

/// Home and End go to the ends of the list, not of the row, also if no row is current.
QModelIndex DeviceTable::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) {
  const auto column = std::max(0, currentIndex().column());
  switch (action) {
    case MoveHome:
      return model_->index(0, column);
    case MoveEnd:
      return model_->index(model_->rowCount({}) - 1, column);
    default:
      return QTableView::moveCursor(action, modifiers);
  }
}

void DeviceTable::changeEvent(QEvent* event) {
  QTableView::changeEvent(event);
  if (event->type() == QEvent::FontChange) {
    setRowHeight();
    shareWidth();
  }
}

void DeviceTable::resizeEvent(QResizeEvent* event) {
  QTableView::resizeEvent(event);
  shareWidth();
}

}  // namespace karvex::ui::qt
