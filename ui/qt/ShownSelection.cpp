#include "ui/qt/ShownSelection.hpp"

#include <utility>

namespace karvex::ui::qt {

ShownSelection::ShownSelection(QAbstractItemModel& model, std::function<void(const QModelIndex&)> wish)
    : QItemSelectionModel(&model), wish_(std::move(wish)) {}

void ShownSelection::showSelected(const QModelIndex& index) {
  if (!index.isValid()) {
    QItemSelectionModel::select(QItemSelection(), Clear);
    clearCurrentIndex();  // So that the next arrow key begins at an end of the table.
  } else if (!isSelected(index) || currentIndex().row() != index.row()) {
    QItemSelectionModel::select(QItemSelection(index, index), ClearAndSelect | Rows);
    QItemSelectionModel::setCurrentIndex(index, NoUpdate);
  }
}

void ShownSelection::select(const QModelIndex& index, SelectionFlags command) {
  select(QItemSelection(index, index), command);
}

void ShownSelection::select(const QItemSelection& selection, SelectionFlags command) {
  const auto indexes = selection.indexes();
  if (indexes.isEmpty()) {  // Only a view or a model that is set up anew asks for that.
    QItemSelectionModel::select(selection, command);
  } else if (command.testAnyFlags(Select | Toggle)) {
    wish_(indexes.front());
  } else if (command.testFlag(Deselect)) {
    wish_({});
  }
}

/// The current row is the selected one. A view that moves it asks for a selection, too.
void ShownSelection::setCurrentIndex(const QModelIndex&, SelectionFlags) {}

}  // namespace karvex::ui::qt
