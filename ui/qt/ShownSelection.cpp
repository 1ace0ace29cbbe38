#include "ui/qt/ShownSelection.hpp"

#include <QSignalBlocker>
#include <utility>

namespace karvex::ui::qt {

ShownSelection::ShownSelection(QAbstractItemModel& model, std::function<void(const QModelIndex&)> wish)
    : QItemSelectionModel(&model), wish_(std::move(wish)) {}

void ShownSelection::showSelected(const QModelIndex& index) {
  if (!index.isValid()) {
    showNone();
  } else if (!isSelected(index) || currentIndex().row() != index.row()) {
    QItemSelectionModel::select(QItemSelection(index, index), ClearAndSelect | Rows);
    QItemSelectionModel::setCurrentIndex(index, NoUpdate);
  }
}

void ShownSelection::showNone() {
  QItemSelectionModel::select(QItemSelection(), Clear);
  clearCurrentIndex();  // So that the next arrow key begins at an end of the table.
}

/// The model has other rows: nothing that was shown is there any more. Views hear of it from the model.
void ShownSelection::reset() {
  const QSignalBlocker blocker(this);
  showNone();
}

void ShownSelection::clear() {
  wish_({});
}

void ShownSelection::select(const QModelIndex& index, SelectionFlags command) {
  select(QItemSelection(index, index), command);
}

void ShownSelection::select(const QItemSelection& selection, SelectionFlags command) {
  const auto indexes = selection.indexes();
  if (indexes.isEmpty()) {
    if (command.testFlag(Clear)) {  // A click beside the rows, or a tool that takes the selection away.
      wish_({});
    }
  } else if (command.testAnyFlags(Select | Toggle)) {
    wish_(indexes.front());
  } else if (command.testFlag(Deselect)) {
    wish_({});
  }
}

/// The current row is the selected one. A view that moves it asks for a selection, too.
void ShownSelection::setCurrentIndex(const QModelIndex&, SelectionFlags) {}

}  // namespace karvex::ui::qt
