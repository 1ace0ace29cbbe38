#include "ui/qt/DeviceTableModel.hpp"

#include <QFontDatabase>
#include <QPointF>
#include <algorithm>
#include <cstddef>
#include <cstdlib>

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

/// A face alone, so that its size is the table's.
QFont monospaced() {
  QFont font;
  font.setFamilies({QFontDatabase::systemFont(QFontDatabase::FixedFont).family()});
  font.setStyleHint(QFont::Monospace);
  return font;
}

/// From one end of the bar to the other and back.
QPointF wanderingPiece(int step) {
  constexpr double length = 0.3;
  constexpr int stepsOneWay = 12;
  const auto place = stepsOneWay - std::abs(step % (2 * stepsOneWay) - stepsOneWay);
  const auto start = (1 - length) * place / stepsOneWay;
  return {start, start + length};
}

std::optional<int> placeOfBar(const Snapshot& snapshot) {
  const auto row =
      std::ranges::find_if(snapshot.rows, [&snapshot](const auto& one) { return showsBar(snapshot, one); });
  return row == snapshot.rows.end() ? std::nullopt
                                    : std::optional(static_cast<int>(row - snapshot.rows.begin()));
}

}  // namespace

void DeviceTableModel::draw(const Snapshot& snapshot) {
  setRows(snapshot.rows);
  const auto place = placeOfBar(snapshot);
  if (place != rowWithBar_) {
    tellOfBar();
    rowWithBar_ = place;
    tellOfBar();
  }
}

void DeviceTableModel::setRows(const std::vector<DeviceRow>& rows) {
  if (!std::ranges::equal(rows_, rows, {}, &DeviceRow::id, &DeviceRow::id)) {
    beginResetModel();
    rows_ = rows;
    rowWithBar_.reset();
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
  if (progress == progress_ && progress.isKnown()) {
    return;
  }
  progress_ = progress;
  ++step_;
  tellOfBar();
}

void DeviceTableModel::tellOfBar() {
  if (rowWithBar_) {
    const auto cell = index(*rowWithBar_, static_cast<int>(Column::status));
    emit dataChanged(cell, cell, {barRole, Qt::AccessibleDescriptionRole});
  }
}

QVariant DeviceTableModel::barIn(const QModelIndex& index) const {
  if (index.row() != rowWithBar_ || columnOf(index.column()) != Column::status) {
    return {};
  }
  if (!progress_.isKnown()) {
    return wanderingPiece(step_);
  }
  return QPointF(0, std::min(1.0, static_cast<double>(progress_.blocksSent) / progress_.blocksToSend));
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
      return descriptionOf(index);
    case Qt::ToolTipRole: {
      const auto more = descriptionOf(index);
      const auto text = lineText(textOf(row, column));
      return plainToolTip(more.isEmpty() ? text : text + QStringLiteral(" (") + more + QStringLiteral(")"));
    }
    case Qt::FontRole:
      return column == Column::serialNumber ? monospaced() : QVariant();
    case toneRole:
      return toneIn(row, column);
    case markRole:
      return column == Column::status ? valueOf(row.onlineMark) : QVariant();
    case barRole:
      return barIn(index);
    default:
      return {};
  }
}

/// In words what a cell says with a colour or a bar.
QString DeviceTableModel::descriptionOf(const QModelIndex& index) const {
  const auto& row = *rowAt(index);
  const auto column = columnOf(index.column());
  if (column == Column::currentVersion) {
    return row.currentVersionTone == Tone::green ? tr("same as the target version")
                                                 : tr("differs from the target version");
  }
  if (column != Column::status) {
    return {};
  }
  auto words = row.onlineMark == Tone::green ? tr("online") : tr("offline");
  if (index.row() == rowWithBar_ && progress_.isKnown()) {
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
