#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "ui/Snapshot.hpp"
#include "ui/Texts.hpp"
#include "ui/console/StyledText.hpp"

namespace karvex::ui::console {

/// How the device table shares the columns of a terminal. The status and the versions come first; the names
/// share what is left, the widest give way first, and where even that is too little, columns are left out:
/// the firmware's name, then the serial number, then the versions. From 80 columns on there are all six.
/// Pure functions.
class TableLayout {
 public:
  /// The layout for these rows on a terminal of that many columns. A few columns are enough for any table to
  /// be made, but not for it to be read; lines may then be wider than the terminal.
  /// Thread-safe: yes.
  /// Realtime-safe: no, it allocates.
  TableLayout(const std::vector<DeviceRow>& rows, std::size_t columns);

  /// The titles, in one line or two.
  /// Thread-safe: yes.
  /// Realtime-safe: no, it allocates.
  std::vector<StyledLine> titleLines() const;

  /// A row of the table, with the mark of the selected one.
  /// Thread-safe: yes.
  /// Realtime-safe: no, it allocates.
  StyledLine rowLine(const DeviceRow& row, bool isSelected) const;

 private:
  static constexpr std::size_t count = texts::columnTitles.size();
  template <typename T>
  using OfColumns = std::array<T, count>;

  bool fits(const OfColumns<std::size_t>& wishes, std::size_t columns) const;
  void share(const OfColumns<std::size_t>& wishes, std::size_t columns);
  std::size_t roomFor(std::size_t columns) const;

  OfColumns<std::vector<std::string>> titles_;
  OfColumns<std::size_t> widths_{};
  OfColumns<bool> isShown_{true, true, true, true, true, true};
};

}  // namespace karvex::ui::console
