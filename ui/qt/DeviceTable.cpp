#include "ui/qt/DeviceTable.hpp"

#include <QEvent>
#include <QHeaderView>
#include <QPainter>
#include <algorithm>
#include <utility>
#include <vector>

#include "ui/qt/CellDelegate.hpp"
#include "ui/qt/DeviceTableModel.hpp"
#include "ui/qt/RoundedFrame.hpp"
#include "ui/qt/ShownSelection.hpp"
#include "ui/qt/TableHeader.hpp"

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
  setAccessibleDescription(tr("The devices that can be upgraded. Choose one with the arrow keys."));
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

/// Each column gets what it asks for, and the first one the rest. Where the width is short, the widest give
/// way.
void DeviceTable::shareWidth() {
  auto room = std::max(0, viewport()->width() - statusColumnWidth);
  std::vector<std::pair<int, int>> wishes;  // The width, and the column.
  for (int column = 0; column < statusColumn; ++column) {
    const auto wish = std::max(sizeHintForColumn(column), horizontalHeader()->sectionSizeHint(column));
    wishes.emplace_back(column == 0 ? std::max(room, wish) : wish, column);
  }
  // The narrowest are served first, and none gets more than an equal share of what is left; the first column
  // comes last, as what it asks for grows with the room.
  std::ranges::sort(wishes);
  for (auto left = static_cast<int>(wishes.size()); const auto& [wish, column] : wishes) {
    const auto width = std::min(wish, room / left--);
    horizontalHeader()->resizeSection(column, width);
    room -= width;
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
  const auto selected = model_->indexOf(snapshot.selected);
  selection_->showSelected(selected);
  if (selected.isValid() && selected != wasSelected) {
    scrollTo(selected);
  }
}

void DeviceTable::drawProgress(const upgrade::LoadProgress& progress) {
  model_->setProgress(progress);
}

bool DeviceTable::hasBar() const {
  return model_->hasBar();
}

/// Home and End go to the ends of the list, not of the row.
QModelIndex DeviceTable::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) {
  const bool isToTheEnd = action == MoveHome || action == MoveEnd;
  return QTableView::moveCursor(action, isToTheEnd ? modifiers | Qt::ControlModifier : modifiers);
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
