#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "ui/Snapshot.hpp"
#include "ui/console/StyledText.hpp"
#include "upgrade/LoadProgress.hpp"

/// The pages that the terminal front draws. Pure functions.
namespace karvex::ui::console {

/// A bar of that many columns with the blocks behind it, for example "[####....] 12/24 blocks".
std::string progressBar(const upgrade::LoadProgress& progress, std::size_t columns);

/// What a terminal has room for.
struct PageSize {
  std::size_t columns;
  std::size_t lines;

  bool operator==(const PageSize&) const = default;
};

/// The whole page: the table with the mark of the selected row, what the keys do, and what is up: an alert or
/// the sheet of the equipment report. `notice` stands at the bottom. Never larger than `size`: the alert's
/// message and the notice are wrapped, other lines are cut, rows far from the selected one are left out, and
/// what still doesn't fit is the page's beginning.
std::vector<StyledLine> pageOf(const Snapshot& snapshot, const upgrade::LoadProgress& progress,
                               const std::string& notice, PageSize size);

/// The table without a selection, for a plain list.
std::vector<std::string> tableText(const Snapshot& snapshot);

}  // namespace karvex::ui::console
