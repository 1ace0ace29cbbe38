#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "ui/Snapshot.hpp"
#include "ui/console/StyledText.hpp"
#include "upgrade/LoadProgress.hpp"

/// The pages that the terminal front draws. Pure functions.
namespace karvex::ui::console {

/// A bar of that many columns with the blocks after it, for example "[####....] 12/24 blocks"; without them
/// and empty as long as it isn't known how many there are. Thread-safe: yes. Realtime-safe: no, it allocates.
std::string progressBar(const upgrade::LoadProgress& progress, std::size_t columns);

/// What a terminal has room for.
struct PageSize {
  std::size_t columns;
  std::size_t lines;

  bool operator==(const PageSize&) const = default;
};

/// The whole page: the table with the mark of the selected row, what the keys do, and what is up: an alert or
/// the sheet of the equipment report. The last of the notices stands at the bottom, those before it above it
/// where there is room. Never larger than `size`: the table's columns share it, texts are wrapped, rows far
/// from the selected one are left out, and what still doesn't fit is the page's beginning. Thread-safe: yes.
/// Realtime-safe: no, it allocates.
std::vector<StyledLine> pageOf(const Snapshot& snapshot, const upgrade::LoadProgress& progress,
                               std::span<const std::string> notices, PageSize size);

/// The table without a selection, for a plain list.
/// Thread-safe: yes.
/// Realtime-safe: no, it allocates.
std::vector<std::string> tableText(const Snapshot& snapshot);

}  // namespace karvex::ui::console
