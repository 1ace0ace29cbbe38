#pragma once

#include <QTableView>
#include <functional>
#include <optional>

#include "ui/Snapshot.hpp"
#include "upgrade/LoadProgress.hpp"

namespace karvex::ui::qt {

class DeviceTableModel;
class ShownSelection;

/// The table of devices. One row at most is selected: that of the snapshot. Without a row, its body says why.
class DeviceTable final : public QTableView {
  Q_OBJECT

 public:
  /// `select` is called when the user chooses a row, or none.
  DeviceTable(std::function<void(std::optional<foundation::Uuid>)> select, QWidget* parent);

  void draw(const Snapshot& snapshot);
  void drawProgress(const upgrade::LoadProgress& progress);
  /// A row has the bar of a load, which is to be drawn anew as it moves.
  bool hasBar() const;

 protected:
  QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
  void changeEvent(QEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void drawEmptyText(const QString& text);
  void describe();
  void layOutColumns();
  void shareWidth();
  void setRowHeight();

  DeviceTableModel* model_;
  ShownSelection* selection_;
  QString emptyText_;
};

}  // namespace karvex::ui::qt
