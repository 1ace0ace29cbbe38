#include "app/diagnosis/Diagnosis.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "device/DeviceExplorer.hpp"
#include "device/platform/UsbBus.hpp"
#include "ui/LineText.hpp"
#include "ui/console/StyledText.hpp"

namespace karvex::app {
namespace {

using ui::lineOf;

class Report {
 public:
  void head(std::string_view text) { text_ += fmt::format("\n{}\n", text); }
  void line(std::string_view text) { text_ += lineOf(text) + '\n'; }
  void item(std::string_view name, std::string_view value) { line(fmt::format("  {:<12} {}", name, value)); }
  /// Items of a list, or a line in their place.
  void list(const std::vector<std::string>& items, std::string_view none) {
    for (const auto& one : items) {
      line("  " + one);
    }
    if (items.empty()) {
      line(fmt::format("  {}", none));
    }
  }
  std::string text() const { return text_; }

 private:
  std::string text_;
};

std::string_view wordOf(CheckStep::Result result) {
  switch (result) {
    case CheckStep::Result::well:
      return "ok";
    case CheckStep::Result::failed:
      return "FAILED";
    case CheckStep::Result::notTried:
      return "not tried";
  }
  return "";
}

void addService(Report& report, const ServiceDiagnosis& service) {
  report.head("Firmware service");
  report.item("address", service.address);
  if (service.usesProxy) {
    report.item("proxy", "set in the environment");
  }
  for (const auto& step : service.steps) {
    const auto* const colon = step.detail.empty() ? "" : ": ";
    report.item(step.name, fmt::format("{}{}{}", wordOf(step.result), colon, step.detail));
  }
}

std::string_view modeOf(const device::UsbDevice& device) {
  if (!device::DeviceExplorer::isEquipment(device)) {
    return "no board that Karvex upgrades";
  }
  if (device.serialNumber.value_or("").empty()) {
    return "passed over, as it has no usable serial number";
  }
  return device::DeviceExplorer::isHalfkay(device) ? "in its bootloader (HalfKay)" : "runs its firmware";
}

std::string stateOf(const device::SurveyedNode& node, bool hasRules) {
  std::string state = node.obstacle.empty() ? "may be opened" : "MAY NOT BE OPENED: " + node.obstacle;
  if (!node.holders.empty()) {
    state += "; held by " + node.holders;
  }
  if (node.isTagged && *node.isTagged) {
    state += "; our rules are in force";
  } else if (node.isTagged) {
    state +=
        hasRules ? "; OUR RULES ARE NOT IN FORCE: plug the board in again" : "; OUR RULES ARE NOT IN FORCE";
  }
  return state;
}

void addBoard(Report& report, const device::SurveyedBoard& board, bool hasRules) {
  const auto& device = board.device;
  report.line(fmt::format("  {}: {:04X}:{:04X} revision {:04X} #{} \"{}\": {}", board.place,
                          device.idVendor.value_or(0), device.idProduct.value_or(0),
                          device.bcdDevice.value_or(0), device.serialNumber.value_or(""),
                          device.product.value_or(""), modeOf(device)));
  for (const auto& node : board.nodes) {
    report.line(fmt::format("    {}: {}", node.path, stateOf(node, hasRules)));
  }
  if (board.nodes.empty()) {
    report.line("    NO DEVICE NODE");
  }
  const auto addGuard = [&](std::string_view whom, const std::optional<bool>& isKept) {
    if (isKept) {
      report.line(fmt::format("    {} {}", whom, *isKept ? "leave it alone" : "MAY TALK TO IT"));
    }
  };
  addGuard("modem managers", board.isKeptFromModemManagers);
  addGuard("MTP probes", board.isKeptFromMtpProbes);
}

std::string rulesOf(const SystemDiagnosis& system) {
  if (system.rulesFile.empty()) {
    return "MISSING: no *-karvex.rules where udev looks";
  }
  return system.rulesFile + (system.rulesAreOff ? ": TURNED OFF, the file is empty" : "");
}

}  // namespace

std::string textOf(const Diagnosis& diagnosis) {
  const auto& system = diagnosis.system;
  Report report;
  report.line(fmt::format("{}, {}", diagnosis.program, diagnosis.time));
  report.line(fmt::format("{}, as {}", system.system, system.isRoot ? "root" : "an ordinary user"));
  addService(report, diagnosis.service);
  report.head("Boards on the USB bus");
  for (const auto& board : diagnosis.boards) {
    addBoard(report, board, !system.rulesFile.empty() && !system.rulesAreOff);
  }
  if (diagnosis.boards.empty()) {
    report.line("  none");
  }
  report.head("Device rules");
  report.item("file", rulesOf(system));
  report.item("udevd", system.udevdRuns ? "runs" : "DOES NOT RUN");
  report.head("Programs that may interfere");
  report.list(system.interferingPrograms, "none");
  report.head("MIDI service");
  report.item(system.midiNode,
              system.midiObstacle.empty() ? "may be opened" : "MAY NOT BE OPENED: " + system.midiObstacle);
  report.head("Last failures");
  report.list(diagnosis.failures, "none");
  return report.text();
}

}  // namespace karvex::app
