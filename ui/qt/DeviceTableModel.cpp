#include "ui/qt/DeviceTableModel.hpp"

#include <QFontDatabase>
#include <algorithm>
#include <cstddef>

#include "ui/Texts.hpp"
#include "ui/qt/Text.hpp"

namespace karvex::ui::qt {
namespace {

constexpr int columns = static_cast<int>(texts::columnTitles.size());

Column columnOf(int section) {
  return static_cast<Column>(section);
}

const std::string& textOf(const DeviceRow& row, Column column) {
  switch (column) {
    case Column::device:
      return row.device;
    case Column::serialNumber:
      return row.serialNumber;
    case Column::firmwareName:
      return row.firmwareName;
    case Column::currentVersion:
      return row.currentVersion;
    case Column::targetVersion:
      return row.targetVersion;
    case Column::status:
      break;
  }
  return row.statusText;
}

QVariant valueOf(Tone tone) {
  return static_cast<int>(tone);
}

QVariant toneIn(const DeviceRow& row, Column column) {
  switch (column) {
    case Column::currentVersion:
      return valueOf(row.currentVersionTone);
    case Column::status:
      return valueOf(row.statusTone);
    default:
      return {};
  }
}

double shareOf(const upgrade::LoadProgress& progress) {
  return progress.isKnown() ? std::min(1.0, static_cast<double>(progress.blocksSent) / progress.blocksToSend)
                            : 0.0;
}

}  // namespace

void DeviceTableModel::setRows(const std::vector<DeviceRow>& rows) {
  if (!std::ranges::equal(rows_, rows, {}, &DeviceRow::id, &DeviceRow::id)) {
    beginResetModel();
    rows_ = rows;
    endResetModel();
    return;
  }
  for (std::size_t place = 0; place < rows.size(); ++place) {
    if (rows_[place] != rows[place]) {
      rows_[place] = rows[place];
      const auto row = static_cast<int>(place);
      emit dataChanged(index(row, 0), index(row, columns - 1));
    }
  }
}

void DeviceTableModel::setProgress(const upgrade::LoadProgress& progress) {
  if (progress.blocksSent == progress_.blocksSent && progress.blocksToSend == progress_.blocksToSend) {
    return;
  }
  progress_ = progress;
  for (std::size_t place = 0; place < rows_.size(); ++place) {
    if (rows_[place].showsProgress) {
      const auto cell = index(static_cast<int>(place), static_cast<int>(Column::status));
      emit dataChanged(cell, cell, {progressRole, Qt::AccessibleDescriptionRole});
    }
  }
}

bool DeviceTableModel::showsProgress() const {
  return std::ranges::any_of(rows_, &DeviceRow::showsProgress);
}

QModelIndex DeviceTableModel::indexOf(const std::optional<foundation::Uuid>& device) const {
  const auto row = std::ranges::find_if(rows_, [&device](const DeviceRow& one) { return one.id == device; });
  return row == rows_.end() ? QModelIndex() : index(static_cast<int>(row - rows_.begin()), 0);
}

std::optional<foundation::Uuid> DeviceTableModel::deviceAt(const QModelIndex& index) const {
  const auto* row = rowAt(index);
  return row != nullptr ? std::optional(row->id) : std::nullopt;
}

const DeviceRow* DeviceTableModel::rowAt(const QModelIndex& index) const {
  const auto place = static_cast<std::size_t>(index.row());
  return index.isValid() && place < rows_.size() ? &rows_[place] : nullptr;
}

int DeviceTableModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int DeviceTableModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : columns;
}

QVariant DeviceTableModel::data(const QModelIndex& index, int role) const {
  const auto* shown = rowAt(index);
  if (shown == nullptr) {
    return {};
  }
  const auto& row = *shown;
  const auto column = columnOf(index.column());
  switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
      return lineText(textOf(row, column));
    case Qt::AccessibleDescriptionRole:
      return descriptionOf(row, column);
    case Qt::ToolTipRole: {
      const auto more = descriptionOf(row, column);
      const auto text = lineText(textOf(row, column));
      return plainToolTip(more.isEmpty() ? text : text + QStringLiteral(" (") + more + QStringLiteral(")"));
    }
    case Qt::FontRole:
      return column == Column::serialNumber ? QFontDatabase::systemFont(QFontDatabase::FixedFont)
                                            : QVariant();
    case toneRole:
      return toneIn(row, column);
    case markRole:
      return column == Column::status ? valueOf(row.onlineMark) : QVariant();
    case progressRole:
      return column == Column::status && row.showsProgress ? QVariant(shareOf(progress_)) : QVariant();
    default:
      return {};
  }
}

/// In words what a cell says with a colour or a bar.
QString DeviceTableModel::descriptionOf(const DeviceRow& row, Column column) const {
  if (column == Column::currentVersion) {
    return row.currentVersionTone == Tone::green ? tr("same as the target version")
                                                 : tr("differs from the target version");
  }
  if (column != Column::status) {
    return {};
  }
  auto words = row.onlineMark == Tone::green ? tr("online") : tr("offline");
  if (row.showsProgress && progress_.isKnown()) {
    words += tr(", %1 of %2 blocks sent").arg(progress_.blocksSent).arg(progress_.blocksToSend);
  }
  return words;
}

QVariant DeviceTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || section >= columns) {
    return {};
  }
  return role == Qt::DisplayRole || role == Qt::AccessibleTextRole
             ? qtText(texts::columnTitles[static_cast<std::size_t>(section)])
             : QVariant();
}

}  // namespace karvex::ui::qt
