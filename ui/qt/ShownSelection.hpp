#pragma once

#include <QItemSelectionModel>
#include <functional>

namespace karvex::ui::qt {

/// The selection of a view that shows what it is told: what the user does to it with the mouse, the keyboard
/// or an assistive tool changes nothing here, but is handed on as a wish.
class ShownSelection final : public QItemSelectionModel {
  Q_OBJECT

 public:
  /// `wish` gets the row that the user wants to be selected, or an invalid index for none.
  ShownSelection(QAbstractItemModel& model, std::function<void(const QModelIndex&)> wish);

  /// Selects the row of the index and makes it current; none if it is invalid.
  void showSelected(const QModelIndex& index);

  void select(const QModelIndex& index, SelectionFlags command) override;
  void select(const QItemSelection& selection, SelectionFlags command) override;
  void setCurrentIndex(const QModelIndex& index, SelectionFlags command) override;
  void clear() override;
  void reset() override;

 private:
  void showNone();

  std::function<void(const QModelIndex&)> wish_;
};

}  // namespace karvex::ui::qt
