#include "ui/console/Screen.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "ui/Texts.hpp"

namespace karvex::ui::console {
namespace {

using Widths = std::array<std::size_t, texts::columnTitles.size()>;

constexpr std::size_t mostColumnsOfCell = 28;
constexpr std::size_t barColumns = 30;
constexpr std::string_view gap = "  ";
constexpr std::string_view onlineMark = "●";

std::array<std::string, texts::columnTitles.size()> cellsOf(const DeviceRow& row) {
  return {printable(row.device),         printable(row.serialNumber),  printable(row.firmwareName),
          printable(row.currentVersion), printable(row.targetVersion), printable(row.statusText)};
}

Widths widthsOf(const Snapshot& snapshot) {
  Widths widths{};
  for (std::size_t i = 0; i < widths.size(); ++i) {
    widths[i] = columnsOf(texts::columnTitles[i]);
  }
  for (const auto& row : snapshot.rows) {
    const auto cells = cellsOf(row);
    for (std::size_t i = 0; i < widths.size(); ++i) {
      widths[i] = std::min(mostColumnsOfCell, std::max(widths[i], columnsOf(cells[i])));
    }
  }
  return widths;
}

StyledLine titleLine(const Widths& widths) {
  StyledLine line{{{"  ", std::nullopt}}};
  for (std::size_t i = 0; i < widths.size(); ++i) {
    // The last column has the mark ahead of its text.
    line.spans.push_back({fitted(texts::columnTitles[i], widths[i] + (i == 5 ? 2 : 0)) + std::string(gap),
                          std::nullopt, true});
  }
  return line;
}

StyledLine rowLine(const DeviceRow& row, const Widths& widths, bool isSelected) {
  const auto cells = cellsOf(row);
  const auto cell = [&](std::size_t i) { return fitted(cells[i], widths[i]) + std::string(gap); };
  return {{{isSelected ? "> " : "  ", std::nullopt},
           {cell(0) + cell(1) + cell(2), std::nullopt},
           {cell(3), row.currentVersionTone},
           {cell(4), std::nullopt},
           {std::string(onlineMark) + " ", row.onlineMark},
           {cell(5), row.statusTone}},
          isSelected};
}

StyledLine plainLine(std::string text, bool isBold = false) {
  return {{{std::move(text), std::nullopt, isBold}}};
}

/// The lines of the rows, each with the bar below it that it may have.
std::vector<StyledLine> rowLines(const Snapshot& snapshot, const upgrade::LoadProgress& progress) {
  const auto widths = widthsOf(snapshot);
  std::vector<StyledLine> lines;
  for (const auto& row : snapshot.rows) {
    const bool isSelected = snapshot.selected == row.id;
    lines.push_back(rowLine(row, widths, isSelected));
    if (isSelected && row.showsProgress && progress.isKnown()) {
      lines.push_back(plainLine("    " + progressBar(progress, barColumns)));
    }
  }
  if (lines.empty()) {
    lines.push_back(plainLine("  (no device)"));
  }
  return lines;
}

/// Leaves so many of the lines, with the selected row about in their middle.
void keepAroundSelected(std::vector<StyledLine>& lines, std::size_t most) {
  if (lines.size() <= most) {
    return;
  }
  const auto selected = std::ranges::find_if(lines, &StyledLine::isReversed);
  const auto place = selected == lines.end() ? 0 : static_cast<std::size_t>(selected - lines.begin());
  const auto first = std::min(place - std::min(place, (most - 1) / 2), lines.size() - most);
  const auto begin = lines.begin() + static_cast<std::ptrdiff_t>(first);
  lines = std::vector<StyledLine>(begin, begin + static_cast<std::ptrdiff_t>(most));
}

/// What went wrong, and with what, must not be cut off.
void addWrapped(std::vector<StyledLine>& page, std::string_view text, std::string_view indent,
                std::size_t columns) {
  const auto room = columns > indent.size() ? columns - indent.size() : 1;
  for (const auto& line : wrapped(printable(text), room)) {
    page.push_back(plainLine(std::string(indent) + line));
  }
}

void addMessage(std::vector<StyledLine>& page, std::string_view message, std::size_t columns) {
  while (!message.empty()) {
    const auto end = std::min(message.find('\n'), message.size());
    addWrapped(page, message.substr(0, end), "  ", columns);
    message.remove_prefix(std::min(end + 1, message.size()));
  }
}

void addAlert(std::vector<StyledLine>& page, const AlertText& alert, std::size_t columns) {
  page.push_back({{{"! " + alert.title, Tone::red, true}}});
  addMessage(page, alert.message, columns);
  page.push_back(plainLine(fmt::format("  Enter: {}", texts::okButton), true));
}

void addSheet(std::vector<StyledLine>& page, const Snapshot& snapshot) {
  page.push_back(plainLine(std::string(texts::syncHelp), true));
  for (const auto& line : texts::sheet) {
    page.push_back(plainLine("  " + std::string(line)));
  }
  page.push_back(plainLine(fmt::format("  Enter: {}    x: close{}", texts::sendButton,
                                       snapshot.isSendingReport ? "    sending..." : ""),
                           true));
}

std::string keysOf(const Snapshot& snapshot) {
  std::string keys = snapshot.isRunning ? "" : "up/down: select  ";
  keys += snapshot.canUpload ? fmt::format("u: {}  ", texts::uploadButton) : "";
  keys += snapshot.canAct ? "r: refresh  s: sync  " : "";
  return keys + "q: quit";
}

std::vector<StyledLine> headLines(const Snapshot& snapshot) {
  return {plainLine(std::string(texts::instruction[0])),
          {{{std::string(texts::emphasisedInstruction), std::nullopt, true},
            {std::string(texts::instruction[1].substr(texts::emphasisedInstruction.size())), std::nullopt}}},
          {},
          titleLine(widthsOf(snapshot))};
}

std::vector<StyledLine> tailLines(const Snapshot& snapshot, const std::string& notice, std::size_t columns) {
  std::vector<StyledLine> lines(1);
  if (snapshot.alert) {
    addAlert(lines, *snapshot.alert, columns);
  } else if (snapshot.showsDeviceExplorer) {
    addSheet(lines, snapshot);
  } else {
    lines.push_back(plainLine(keysOf(snapshot)));
  }
  if (!notice.empty()) {
    addWrapped(lines, notice, "", columns);
  }
  return lines;
}

/// A line that is wider than the terminal would wrap, and the page could not be drawn over.
void cut(StyledLine& line, std::size_t columns) {
  for (auto& span : line.spans) {
    const auto width = std::min(columns, columnsOf(span.text));
    span.text = fitted(span.text, width);
    columns -= width;
  }
}

}  // namespace

std::string progressBar(const upgrade::LoadProgress& progress, std::size_t columns) {
  const auto total = std::max(progress.blocksToSend, 1U);
  const auto sent = std::min(progress.blocksSent, total);
  const auto filled = columns * sent / total;
  return fmt::format("[{}{}] {}/{} blocks", std::string(filled, '#'), std::string(columns - filled, '.'),
                     sent, total);
}

std::vector<StyledLine> pageOf(const Snapshot& snapshot, const upgrade::LoadProgress& progress,
                               const std::string& notice, PageSize size) {
  std::vector<StyledLine> page = headLines(snapshot);
  const auto tail = tailLines(snapshot, notice, size.columns);
  auto rows = rowLines(snapshot, progress);
  const auto others = page.size() + tail.size();
  keepAroundSelected(rows, size.lines > others ? size.lines - others : 1);
  std::ranges::move(rows, std::back_inserter(page));
  page.insert(page.end(), tail.begin(), tail.end());
  if (page.size() > size.lines) {
    page.erase(page.begin(), page.end() - static_cast<std::ptrdiff_t>(size.lines));
  }
  for (auto& line : page) {
    cut(line, size.columns);
  }
  return page;
}

std::vector<std::string> tableText(const Snapshot& snapshot) {
  const auto widths = widthsOf(snapshot);
  std::vector<std::string> lines{titleLine(widths).plainText()};
  for (const auto& row : snapshot.rows) {
    lines.push_back(rowLine(row, widths, false).plainText());
  }
  for (auto& line : lines) {
    line.erase(line.find_last_not_of(' ') + 1);
  }
  return lines;
}

}  // namespace karvex::ui::console
