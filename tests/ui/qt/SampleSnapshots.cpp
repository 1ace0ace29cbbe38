#include "tests/ui/qt/SampleSnapshots.hpp"

#include <array>
#include <string>

#include "upgrade/StopNotice.hpp"

namespace karvex::ui::qt::samples {
namespace {

constexpr std::array statusTexts{"Idle",
                                 "Preparing...",
                                 "Importing file...",
                                 "Moving file...",
                                 "Checking device state...",
                                 "Programming...",
                                 "Rebooting...",
                                 "Success",
                                 "Error - Unknown MCU device",
                                 "Could not import file",
                                 "Bad file format",
                                 "Program error",
                                 "Permission denied"};

constexpr std::array statusTones{Tone::gray,   Tone::orange, Tone::white, Tone::white, Tone::orange,
                                 Tone::orange, Tone::orange, Tone::green, Tone::red,   Tone::red,
                                 Tone::red,    Tone::red,    Tone::red};

constexpr std::array names{"Expression Pedal", "LED Ring", "Patch Panel", "Rhythm Box", "Tape Echo"};

void setStatus(DeviceRow& row, std::uint32_t status) {
  row.status = status;
  row.statusText = statusTexts.at(status);
  row.statusTone = statusTones.at(status);
  row.isProgramming = status == 5;
}

}  // namespace

DeviceRow rowWith(std::uint32_t status, std::uint8_t seed) {
  DeviceRow row{.device = std::to_string(seed) + " - " + names.at(seed % names.size()),
                .serialNumber = "#10000" + std::to_string(seed) + "0",
                .firmwareName = "firmware-" + std::to_string(seed),
                .currentVersion = "1.4.0",
                .targetVersion = "1.5.0"};
  row.id.bytes.back() = seed;
  setStatus(row, status);
  return row;
}

Snapshot empty() {
  return {
      .emptyText =
          "The service could not be reached: fw.example: could not resolve host name. Check your internet "
          "connection, then refresh the list.",
      .canAct = true};
}

Snapshot idle() {
  Snapshot snapshot{.canAct = true};
  for (std::uint8_t seed = 1; seed <= names.size(); ++seed) {
    snapshot.rows.push_back(rowWith(0, seed));
  }
  snapshot.rows[1].currentVersion = snapshot.rows[1].targetVersion;
  snapshot.rows[1].currentVersionTone = Tone::green;
  return snapshot;
}

Snapshot selected() {
  auto snapshot = idle();
  snapshot.selected = snapshot.rows[0].id;
  snapshot.canUpload = true;
  return snapshot;
}

Snapshot running() {
  auto snapshot = idle();
  snapshot.canAct = false;
  snapshot.isRunning = true;
  for (const auto place : {0U, 1U}) {
    setStatus(snapshot.rows[place], 7);
    snapshot.rows[place].currentVersion = snapshot.rows[place].targetVersion;
    snapshot.rows[place].currentVersionTone = Tone::green;
  }
  setStatus(snapshot.rows[2], 5);
  snapshot.rows[2].onlineMark = Tone::orange;
  snapshot.selected = snapshot.rows[2].id;
  return snapshot;
}

Snapshot stopped() {
  auto snapshot = running();
  snapshot.isRunning = false;
  snapshot.canAct = true;
  snapshot.selected.reset();
  snapshot.stopNotice = upgrade::noticeOf(upgrade::SilentStop::permissionDenied, "1000030",
                                          {.node = "/dev/hidraw3", .rules = device::RulesState::missing});
  return snapshot;
}

upgrade::LoadProgress progress() {
  return {.blocksSent = 228, .blocksToSend = 392};
}

Snapshot withAlert(upgrade::Alert alert) {
  auto snapshot = idle();
  const auto* detail = alert == upgrade::Alert::uploadError ? "Error - Could not open Teensy"
                                                            : "device is busy (held by modem-manager, 812)";
  snapshot.alert = AlertText{alert, std::string(upgrade::titleOf(alert)), upgrade::messageOf(alert, detail)};
  return snapshot;
}

Snapshot withSheet(bool isSending) {
  auto snapshot = idle();
  snapshot.showsDeviceExplorer = true;
  snapshot.isSendingReport = isSending;
  return snapshot;
}

Snapshot everyStatus() {
  Snapshot snapshot{.canAct = true};
  for (std::uint32_t status = 0; status < statusTexts.size(); ++status) {
    snapshot.rows.push_back(rowWith(status, static_cast<std::uint8_t>(status + 1)));
  }
  snapshot.rows[3].device =
      "4 - A device with a name that is far too long for the column it stands in, whatever it is";
  snapshot.rows[4].device = "5 - two\nlines and <b>markup</b>";
  snapshot.rows[5].onlineMark = Tone::orange;
  snapshot.selected = snapshot.rows[9].id;
  return snapshot;
}

}  // namespace karvex::ui::qt::samples
