#pragma once

#include <array>
#include <cstddef>

#include "ui/qt/DeviceTableModel.hpp"

/// How the columns of the table share its width. Pure functions.
namespace karvex::ui::qt {

/// All columns but that of the status, whose width is fixed.
inline constexpr auto sharingColumns = static_cast<std::size_t>(Column::status);

/// What a column asks for, in points.
struct ColumnWish {
  int content = 0;  ///< for its texts, and the longest word of its title
  int title = 0;    ///< for its title in one line
};

/// The widths of the columns, in their order and in points; together they are `room`. Serial numbers and
/// versions are served first and names give way, the longer one more; then the titles get their line. What is
/// left goes to all.
std::array<int, sharingColumns> shareOut(int room, const std::array<ColumnWish, sharingColumns>& wishes);

}  // namespace karvex::ui::qt
