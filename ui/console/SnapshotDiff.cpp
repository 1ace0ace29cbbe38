#include "ui/console/SnapshotDiff.hpp"

#include <fmt/format.h>

#include <algorithm>

#include "ui/LineText.hpp"
#include "ui/console/Screen.hpp"
#include "ui/console/StyledText.hpp"

namespace karvex::ui::console {
namespace {

using Lines = std::vector<std::string>;

bool isSameList(const Snapshot& before, const Snapshot& after) {
  return std::ranges::equal(before.rows, after.rows, {}, &DeviceRow::id, &DeviceRow::id);
}

std::string nameOf(const DeviceRow& row) {
  return lineOf(fmt::format("{} {}", row.serialNumber, row.device));
}

void addRowChanges(Lines& lines, const DeviceRow& before, const DeviceRow& after) {
  if (before.status != after.status) {
    lines.push_back(fmt::format("{}: {}", nameOf(after), lineOf(after.statusText)));
  }
  if (before.currentVersion != after.currentVersion) {
    lines.push_back(lineOf(
        fmt::format("{}: carries {} {} now", nameOf(after), after.firmwareName, after.currentVersion)));
  }
  if (before.onlineMark != after.onlineMark) {
    lines.push_back(
        fmt::format("{}: {}", nameOf(after), after.onlineMark == Tone::green ? "online" : "offline"));
  }
}

void addListChanges(Lines& lines, const Snapshot& before, const Snapshot& after) {
  if (isSameList(before, after)) {
    for (std::size_t i = 0; i < after.rows.size(); ++i) {
      addRowChanges(lines, before.rows[i], after.rows[i]);
    }
  } else if (!after.rows.empty()) {  // A list is emptied before it is filled; only the result is news.
    std::ranges::copy(tableText(after), std::back_inserter(lines));
  }
}

void addEmptyText(Lines& lines, const Snapshot& before, const Snapshot& after) {
  if (before.emptyText != after.emptyText && !after.emptyText.empty() && !after.isAsking) {
    lines.push_back(lineOf(after.emptyText));
  }
}

void addSelectionChange(Lines& lines, const Snapshot& before, const Snapshot& after) {
  if (before.selected == after.selected || !after.selected) {
    return;
  }
  const auto row = std::ranges::find(after.rows, *after.selected, &DeviceRow::id);
  if (row != after.rows.end()) {
    lines.push_back(nameOf(*row) + ": selected");
  }
}

void addAlertChange(Lines& lines, const Snapshot& before, const Snapshot& after) {
  const auto alertOf = [](const Snapshot& snapshot) {
    return snapshot.alert ? std::optional(snapshot.alert->alert) : std::nullopt;
  };
  if (alertOf(before) == alertOf(after)) {
    return;
  }
  if (!after.alert) {
    lines.push_back("OK");
    return;
  }
  lines.push_back("! " + after.alert->title);
  std::string_view message = after.alert->message;
  while (!message.empty()) {
    const auto end = std::min(message.find('\n'), message.size());
    lines.push_back("  " + lineOf(message.substr(0, end)));
    message.remove_prefix(std::min(end + 1, message.size()));
  }
}

}  // namespace

std::vector<std::string> changesBetween(const Snapshot& before, const Snapshot& after) {
  Lines lines;
  addListChanges(lines, before, after);
  addEmptyText(lines, before, after);
  addSelectionChange(lines, before, after);
  addAlertChange(lines, before, after);
  if (before.stopNotice != after.stopNotice && !after.stopNotice.empty()) {
    lines.push_back("! " + lineOf(after.stopNotice));
  }
  return lines;
}

}  // namespace karvex::ui::console
