#include "ui/console/Screen.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <string_view>
#include <utility>

#include "ui/LineText.hpp"
#include "ui/Texts.hpp"
#include "ui/console/TableLayout.hpp"

namespace karvex::ui::console {
namespace {

using Page = std::vector<StyledLine>;

/// A bar has this many columns, and fewer where it and the count of blocks need more room than there is.
constexpr std::size_t barColumns = 30;
constexpr std::size_t besideBar = 24;

/// Older notices leave that many lines to the rows.
constexpr std::size_t leastForRows = 6;

/// A plain list is for files and pipes. Texts are cut only where a table would be wider than this.
constexpr std::size_t columnsOfList = 240;

StyledLine plainLine(std::string text, bool isBold = false) {
  return {{{std::move(text), std::nullopt, isBold}}};
}

void addWrapped(Page& page, std::string_view text, std::string_view indent, std::size_t columns) {
  const auto room = columns > indent.size() ? columns - indent.size() : 1;
  for (const auto& line : wrapped(lineOf(text), room)) {
    page.push_back(plainLine(std::string(indent) + line));
  }
}

/// The items beside each other, in as many lines as they take; an item stays whole.
void addItems(Page& page, const std::vector<std::string>& items, std::string_view indent, std::size_t columns,
              bool isBold = false) {
  std::string line;
  for (const auto& item : items) {
    if (!line.empty() && columnsOf(line) + 2 + columnsOf(item) > columns) {
      page.push_back(plainLine(std::exchange(line, ""), isBold));
    }
    line += std::string(line.empty() ? indent : "  ") + item;
  }
  page.push_back(plainLine(line, isBold));
}

void addBar(Page& page, const upgrade::LoadProgress& progress, std::size_t columns) {
  const auto room = columns > besideBar ? columns - besideBar : 1;
  page.push_back(plainLine("    " + progressBar(progress, std::min(barColumns, room))));
}

/// The lines of the rows, each with the bar below it that it may have.
Page rowLines(const Snapshot& snapshot, const TableLayout& layout, const upgrade::LoadProgress& progress,
              std::size_t columns) {
  Page lines;
  for (const auto& row : snapshot.rows) {
    const bool isSelected = snapshot.selected == row.id;
    lines.push_back(layout.rowLine(row, isSelected));
    if (showsBar(snapshot, row)) {
      addBar(lines, progress, columns);
    }
  }
  if (lines.empty()) {
    addWrapped(lines, snapshot.emptyText, "  ", columns);
  }
  return lines;
}

/// Leaves so many of the lines, with the selected row about in their middle.
void keepAroundSelected(Page& lines, std::size_t most) {
  if (lines.size() <= most) {
    return;
  }
  const auto selected = std::ranges::find_if(lines, &StyledLine::isReversed);
  const auto place = selected == lines.end() ? 0 : static_cast<std::size_t>(selected - lines.begin());
  const auto first = std::min(place - std::min(place, (most - 1) / 2), lines.size() - most);
  const auto begin = lines.begin() + static_cast<std::ptrdiff_t>(first);
  lines = Page(begin, begin + static_cast<std::ptrdiff_t>(most));
}

void addAlert(Page& page, const AlertText& alert, std::size_t columns) {
  for (const auto& line : wrapped("! " + alert.title, columns)) {
    page.push_back({{{line, Tone::red, true}}});
  }
  std::string_view message = alert.message;
  while (!message.empty()) {
    const auto end = std::min(message.find('\n'), message.size());
    addWrapped(page, message.substr(0, end), "  ", columns);
    message.remove_prefix(std::min(end + 1, message.size()));
  }
  page.push_back(plainLine(fmt::format("  Enter: {}", texts::okButton), true));
}

void addSheet(Page& page, const Snapshot& snapshot, std::size_t columns) {
  page.push_back(plainLine(std::string(texts::syncHelp), true));
  for (const auto line : texts::sheet) {
    addWrapped(page, line, "  ", columns);
  }
  std::vector<std::string> items{fmt::format("Enter: {}", texts::sendButton), "x: close"};
  if (snapshot.isSendingReport) {
    items.emplace_back("sending...");
  }
  addItems(page, items, "  ", columns, true);
}

std::vector<std::string> keysOf(const Snapshot& snapshot) {
  std::vector<std::string> keys;
  if (!snapshot.isRunning) {
    keys.emplace_back("up/down: select");
  }
  if (snapshot.canUpload) {
    keys.push_back(fmt::format("u: {}", texts::uploadButton));
  }
  if (snapshot.canAct) {
    keys.insert(keys.end(), {"r: refresh", "s: sync"});
  }
  keys.emplace_back("q: quit");
  return keys;
}

Page headLines(const TableLayout& layout, std::size_t columns) {
  Page page;
  addWrapped(page, texts::instruction[0], "", columns);
  const auto second = page.size();
  addWrapped(page, texts::instruction[1], "", columns);
  auto& spans = page[second].spans;
  if (auto text = spans.front().text; text.starts_with(texts::emphasisedInstruction)) {
    spans = {{std::string(texts::emphasisedInstruction), std::nullopt, true},
             {text.substr(texts::emphasisedInstruction.size()), std::nullopt}};
  }
  page.emplace_back();
  std::ranges::move(layout.titleLines(), std::back_inserter(page));
  return page;
}

Page tailLines(const Snapshot& snapshot, std::size_t columns) {
  Page lines(1);
  if (snapshot.alert) {
    addAlert(lines, *snapshot.alert, columns);
  } else if (snapshot.showsDeviceExplorer) {
    addSheet(lines, snapshot, columns);
  } else {
    addItems(lines, keysOf(snapshot), "", columns);
  }
  if (!snapshot.stopNotice.empty()) {
    for (const auto& line : wrapped(lineOf("! " + snapshot.stopNotice), columns)) {
      lines.push_back({{{line, Tone::red, true}}});
    }
  }
  return lines;
}

/// The last of the notices, and those before it as far as `room` lines hold them whole.
Page noticeLines(std::span<const std::string> notices, std::size_t columns, std::size_t room) {
  Page lines;
  for (auto notice = notices.rbegin(); notice != notices.rend(); ++notice) {
    Page one;
    addWrapped(one, *notice, "", columns);
    if (!lines.empty() && lines.size() + one.size() > room) {
      break;
    }
    lines.insert(lines.begin(), one.begin(), one.end());
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
  if (!progress.isKnown()) {
    return fmt::format("[{}]", std::string(columns, '.'));
  }
  const auto total = progress.blocksToSend;
  const auto sent = std::min(progress.blocksSent, total);
  const auto filled = columns * sent / total;
  return fmt::format("[{}{}] {}/{} blocks", std::string(filled, '#'), std::string(columns - filled, '.'),
                     sent, total);
}

std::vector<StyledLine> pageOf(const Snapshot& snapshot, const upgrade::LoadProgress& progress,
                               std::span<const std::string> notices, PageSize size) {
  const TableLayout layout(snapshot.rows, size.columns);
  auto page = headLines(layout, size.columns);
  auto rows = rowLines(snapshot, layout, progress, size.columns);
  auto tail = tailLines(snapshot, size.columns);
  const auto roomBeside = [&](std::size_t rowCount) {
    const auto taken = page.size() + rowCount + tail.size();
    return size.lines > taken ? size.lines - taken : 0;
  };
  auto below = noticeLines(notices, size.columns, roomBeside(std::min(rows.size(), leastForRows)));
  std::ranges::move(below, std::back_inserter(tail));
  keepAroundSelected(rows, std::max<std::size_t>(roomBeside(0), 1));
  std::ranges::move(rows, std::back_inserter(page));
  std::ranges::move(tail, std::back_inserter(page));
  if (page.size() > size.lines) {
    page.erase(page.begin(), page.end() - static_cast<std::ptrdiff_t>(size.lines));
  }
  for (auto& line : page) {
    cut(line, size.columns);
  }
  return page;
}

std::vector<std::string> tableText(const Snapshot& snapshot) {
  const TableLayout layout(snapshot.rows, columnsOfList);
  std::vector<std::string> lines;
  for (const auto& line : layout.titleLines()) {
    lines.push_back(line.plainText());
  }
  for (const auto& row : snapshot.rows) {
    lines.push_back(layout.rowLine(row, false).plainText());
  }
  for (auto& line : lines) {
    line.erase(line.find_last_not_of(' ') + 1);
  }
  return lines;
}

}  // namespace karvex::ui::console
