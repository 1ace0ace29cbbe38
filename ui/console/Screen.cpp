#include "ui/console/Screen.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
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

void addTable(std::vector<StyledLine>& page, const Snapshot& snapshot,
              const upgrade::LoadProgress& progress) {
  const auto widths = widthsOf(snapshot);
  page.push_back(titleLine(widths));
  if (snapshot.rows.empty()) {
    page.push_back(plainLine("  (no device)"));
  }
  for (const auto& row : snapshot.rows) {
    const bool isSelected = snapshot.selected == row.id;
    page.push_back(rowLine(row, widths, isSelected));
    if (isSelected && row.showsProgress && progress.isKnown()) {
      page.push_back(plainLine("    " + progressBar(progress, barColumns)));
    }
  }
}

void addMessage(std::vector<StyledLine>& page, std::string_view message) {
  while (!message.empty()) {
    const auto end = std::min(message.find('\n'), message.size());
    page.push_back(plainLine("  " + printable(message.substr(0, end))));
    message.remove_prefix(std::min(end + 1, message.size()));
  }
}

void addAlert(std::vector<StyledLine>& page, const AlertText& alert) {
  page.push_back({{{"! " + alert.title, Tone::red, true}}});
  addMessage(page, alert.message);
  page.push_back(plainLine("  Enter: OK", true));
}

void addSheet(std::vector<StyledLine>& page, const Snapshot& snapshot) {
  page.push_back(plainLine("Sync your current equipment information", true));
  for (const auto& line : texts::sheet) {
    page.push_back(plainLine("  " + std::string(line)));
  }
  page.push_back(plainLine(fmt::format("  Enter: {}    x: close{}", texts::sendButton,
                                       snapshot.isSendingReport ? "    sending..." : ""),
                           true));
}

std::string keysOf(const Snapshot& snapshot) {
  std::string keys = snapshot.isRunning ? "" : "up/down: select  ";
  keys += snapshot.canUpload ? "u: Upload Firmware  " : "";
  keys += snapshot.canAct ? "r: refresh  s: sync  " : "";
  return keys + "q: quit";
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
                               const std::string& notice, std::size_t columns) {
  std::vector<StyledLine> page;
  page.push_back(plainLine(std::string(texts::instruction[0])));
  page.push_back(
      {{{std::string(texts::emphasisedInstruction), std::nullopt, true},
        {std::string(texts::instruction[1].substr(texts::emphasisedInstruction.size())), std::nullopt}}});
  page.push_back({});
  addTable(page, snapshot, progress);
  page.push_back({});
  if (snapshot.alert) {
    addAlert(page, *snapshot.alert);
  } else if (snapshot.showsDeviceExplorer) {
    addSheet(page, snapshot);
  } else {
    page.push_back(plainLine(keysOf(snapshot)));
  }
  if (!notice.empty()) {
    page.push_back(plainLine(printable(notice)));
  }
  // A line that is wider than the terminal would wrap, and the page could not be drawn over.
  for (auto& line : page) {
    std::size_t left = columns;
    for (auto& span : line.spans) {
      const auto width = std::min(left, columnsOf(span.text));
      span.text = fitted(span.text, width);
      left -= width;
    }
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
