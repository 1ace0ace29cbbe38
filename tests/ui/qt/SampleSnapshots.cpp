#include "tests/ui/qt/SampleSnapshots.hpp"

#include <array>
#include <string>

#include "loader/load_status.hpp"
#include "ui/Observation.hpp"
#include "upgrade/StopNotice.hpp"

namespace karvex::ui::qt::samples {
namespace {

constexpr std::array names{"Expression Pedal", "LED Ring", "Patch Panel", "Rhythm Box", "Tape Echo"};

constexpr std::uint32_t statuses = 13;

}  // namespace

DeviceRow rowWith(std::uint32_t status, std::uint8_t seed) {
  const auto number = std::to_string(seed);
  records::BootableDevice device;
  device.id = {};
  device.id.bytes.back() = seed;
  device.sequenceNumber = seed;
  device.deviceName = names.at(seed % names.size());
  device.portSerialNumber = "10000" + number + "0";
  device.firmwareName = "firmware-" + number;
  device.currentVersion = status == loader::LOAD_STATUS_SUCCESS ? "1.5.0" : "1.4.0";
  device.firmwareVersion = "1.5.0";
  device.status = status;
  return rowOf(device);
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
  snapshot.rows[0] = rowWith(loader::LOAD_STATUS_SUCCESS, 1);
  snapshot.rows[1] = rowWith(loader::LOAD_STATUS_SUCCESS, 2);
  snapshot.rows[2] = rowWith(loader::LOAD_STATUS_PROGRAMMING, 3);
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
  for (std::uint32_t status = 0; status < statuses; ++status) {
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
