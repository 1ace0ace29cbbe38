#include "ui/console/TableLayout.hpp"
#include "ui/LineText.hpp"

#include <algorithm>
#include <numeric>
#include <string_view>
#include <utility>

namespace karvex::ui::console {
namespace {

enum Column : std::size_t { device, serialNumber, firmwareName, currentVersion, targetVersion, status };

constexpr std::array names{device, serialNumber, firmwareName};
constexpr std::array versions{currentVersion, targetVersion};

constexpr std::size_t selectionColumns = 2;  ///< "> " ahead of a row
constexpr std::size_t markColumns = 2;       ///< the online mark and a blank, ahead of the status
constexpr std::size_t gap = 2;

/// From here on all columns are shown, and below the other one titles are short.
constexpr std::size_t enoughForAll = 80;
constexpr std::size_t enoughForTitles = 60;

/// What the status has at least, so that the table doesn't move in the usual course of a run
/// ("Programming..."), and at most: the longest status text.
constexpr std::size_t leastForStatus = 14;
constexpr std::size_t mostForStatus = 26;
constexpr std::size_t mostForVersion = 10;

constexpr std::array<std::string_view, texts::columnTitles.size()> shortTitles{"Device", "Serial", "Firmware",
                                                                               "Now",    "New",    "Status"};

std::array<std::string, texts::columnTitles.size()> cellsOf(const DeviceRow& row) {
  return {lineOf(row.device),         lineOf(row.serialNumber),  lineOf(row.firmwareName),
          lineOf(row.currentVersion), lineOf(row.targetVersion), lineOf(row.statusText)};
}

/// A title's words stand below each other where the table is too narrow for one line.
std::vector<std::string> wordsOf(std::string_view title) {
  const auto blank = title.find(' ');
  if (blank == std::string_view::npos) {
    return {"", std::string(title)};
  }
  return {std::string(title.substr(0, blank)), std::string(title.substr(blank + 1))};
}

std::string_view onlineMark(const DeviceRow& row) {
  return row.onlineMark == Tone::green ? "● " : "○ ";
}

std::size_t widest(const std::vector<std::string>& lines) {
  std::size_t columns = 0;
  for (const auto& line : lines) {
    columns = std::max(columns, columnsOf(line));
  }
  return columns;
}

}  // namespace

TableLayout::TableLayout(const std::vector<DeviceRow>& rows, std::size_t columns) {
  OfColumns<std::size_t> contents{};
  for (const auto& row : rows) {
    const auto cells = cellsOf(row);
    for (std::size_t i = 0; i < count; ++i) {
      contents[i] = std::max(contents[i], columnsOf(cells[i]));
    }
  }
  contents[status] = std::max(contents[status], leastForStatus);
  const auto wishesWith = [&](auto titleOf) {
    OfColumns<std::size_t> wishes{};
    for (std::size_t i = 0; i < count; ++i) {
      titles_[i] = titleOf(i);
      wishes[i] = std::max(contents[i], widest(titles_[i]));
    }
    return wishes;
  };
  using Lines = std::vector<std::string>;
  auto wishes = wishesWith([](std::size_t i) { return Lines{std::string(texts::columnTitles[i])}; });
  if (std::accumulate(wishes.begin(), wishes.end(), std::size_t{0}) <= roomFor(columns)) {
    widths_ = wishes;
    return;
  }
  wishes = columns < enoughForTitles
               ? wishesWith([](std::size_t i) { return Lines{std::string(shortTitles[i])}; })
               : wishesWith([](std::size_t i) { return wordsOf(texts::columnTitles[i]); });
  wishes[status] = std::min(wishes[status], mostForStatus);
  for (const auto version : versions) {
    wishes[version] = std::min(wishes[version], mostForVersion);
  }
  for (const auto dispensable : {firmwareName, serialNumber, targetVersion, currentVersion}) {
    if (fits(wishes, columns)) {
      break;
    }
    isShown_[dispensable] = false;
  }
  share(wishes, columns);
}

/// What the cells of the columns that are shown have together.
std::size_t TableLayout::roomFor(std::size_t columns) const {
  const auto shown = static_cast<std::size_t>(std::ranges::count(isShown_, true));
  const auto taken = selectionColumns + markColumns + (shown - 1) * gap;
  return columns > taken ? columns - taken : 0;
}

/// True if no name would be cut to fewer columns than tell something.
bool TableLayout::fits(const OfColumns<std::size_t>& wishes, std::size_t columns) const {
  const std::size_t leastForName = columns < enoughForAll ? 9 : 6;
  std::size_t needed = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const bool isName = i < names.size();
    needed += isShown_[i] ? (isName ? std::min(wishes[i], leastForName) : wishes[i]) : 0;
  }
  return needed <= roomFor(columns);
}

void TableLayout::share(const OfColumns<std::size_t>& wishes, std::size_t columns) {
  auto room = roomFor(columns);
  for (const auto column : {status, currentVersion, targetVersion}) {
    widths_[column] = isShown_[column] ? std::min(wishes[column], room) : 0;
    room -= widths_[column];
  }
  std::vector<std::pair<std::size_t, std::size_t>> shares;  // The wish, and the column.
  for (const auto column : names) {
    if (isShown_[column]) {
      shares.emplace_back(wishes[column], column);
    }
  }
  std::ranges::sort(shares);  // Who wants little gets it; the widest give way.
  for (auto left = shares.size(); const auto& [wish, column] : shares) {
    widths_[column] = std::min(wish, room / left--);
    room -= widths_[column];
  }
}

std::vector<StyledLine> TableLayout::titleLines() const {
  std::vector<StyledLine> lines;
  for (std::size_t place = 0; place < titles_.front().size(); ++place) {
    std::string text(selectionColumns, ' ');
    for (std::size_t i = 0; i < count; ++i) {
      if (isShown_[i]) {
        // The status has the mark ahead of its text.
        text += i == status ? fitted(titles_[i][place], markColumns + widths_[i])
                            : fitted(titles_[i][place], widths_[i]) + std::string(gap, ' ');
      }
    }
    lines.push_back({{{std::move(text), std::nullopt, true}}});
  }
  return lines;
}

StyledLine TableLayout::rowLine(const DeviceRow& row, bool isSelected) const {
  const auto cells = cellsOf(row);
  StyledLine line{{{isSelected ? "> " : "  ", std::nullopt}}, isSelected};
  for (std::size_t i = 0; i < count; ++i) {
    if (!isShown_[i]) {
      continue;
    }
    if (i == status) {
      line.spans.push_back({std::string(onlineMark(row)), row.onlineMark});
      line.spans.push_back({fitted(cells[i], widths_[i]), row.statusTone});
    } else {
      const auto tone = i == currentVersion ? std::optional(row.currentVersionTone) : std::nullopt;
      line.spans.push_back({fitted(cells[i], widths_[i]) + std::string(gap, ' '), tone});
    }
  }
  return line;
}

}  // namespace karvex::ui::console
