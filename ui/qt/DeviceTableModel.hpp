#pragma once

#include <QAbstractTableModel>
#include <optional>
#include <vector>

#include "ui/Snapshot.hpp"
#include "upgrade/LoadProgress.hpp"

namespace karvex::ui::qt {

/// The columns of the device table, in order.
enum class Column { device, serialNumber, firmwareName, currentVersion, targetVersion, status };

/// The rows of a snapshot for the table view.
class DeviceTableModel final : public QAbstractTableModel {
  Q_OBJECT

 public:
  using QAbstractTableModel::QAbstractTableModel;

  /// What a cell has to say beyond the toolkit's own roles.
  enum Role {
    toneRole = Qt::UserRole,  ///< Tone of the text, as an int; none for text in the usual colour
    markRole,                 ///< Tone of the mark, as an int; none where there is no mark
    /// The piece of the bar that is filled, as a QPointF of its two ends, from 0 to 1; none where there is no
    /// bar. Before the first block the piece wanders.
    barRole,
  };

  /// Tells the view no more than what has changed.
  void draw(const Snapshot& snapshot);
  /// To be called again and again while a row has a bar.
  void setProgress(const upgrade::LoadProgress& progress);

  bool hasBar() const { return rowWithBar_.has_value(); }
  /// An invalid index if there is no such row.
  QModelIndex indexOf(const std::optional<foundation::Uuid>& device) const;
  /// The device in that row, if there is one.
  std::optional<foundation::Uuid> deviceAt(const QModelIndex& index) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

 private:
  const DeviceRow* rowAt(const QModelIndex& index) const;
  void setRows(const std::vector<DeviceRow>& rows);
  void tellOfBar();
  QVariant barIn(const QModelIndex& index) const;
  QString descriptionOf(const QModelIndex& index) const;

  std::vector<DeviceRow> rows_;
  std::optional<int> rowWithBar_;
  upgrade::LoadProgress progress_;
  int step_ = 0;  ///< of the wandering piece
};

}  // namespace karvex::ui::qt
