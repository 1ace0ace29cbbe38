#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Uuid.hpp"
#include "upgrade/Alert.hpp"

namespace karvex::ui {

/// A colour by its meaning; a front chooses the shade that is readable on its ground.
enum class Tone { gray, orange, white, green, red };

/// One row of the device table as it is shown.
struct DeviceRow {
  foundation::Uuid id;
  std::string device;
  std::string serialNumber;
  std::string firmwareName;
  std::string currentVersion;
  Tone currentVersionTone = Tone::red;
  std::string targetVersion;
  Tone onlineMark = Tone::green;
  std::uint32_t status = 0;
  std::string statusText;
  Tone statusTone = Tone::gray;
  /// The device is being programmed: upgrade::currentLoadProgress() is about this row.
  bool showsProgress = false;

  bool operator==(const DeviceRow&) const = default;
};

/// A dialog that is up.
struct AlertText {
  upgrade::Alert alert;
  std::string title;
  std::string message;

  bool operator==(const AlertText&) const = default;
};

/// Everything that a front draws, as a value: it can be handed to another thread.
struct Snapshot {
  std::vector<DeviceRow> rows;
  std::optional<foundation::Uuid> selected;
  bool canUpload = false;
  bool canAct = false;       ///< the refresh and sync buttons are free
  bool isRunning = false;    ///< an upgrade run is going
  bool isReporting = false;  ///< the service is being told of an upgrade
  std::optional<AlertText> alert;
  std::string
      stopNotice;  ///< what no dialog says of a run that has stopped; empty if there is nothing to say
  bool showsDeviceExplorer = false;
  bool isSendingReport = false;  ///< of the sheet

  bool operator==(const Snapshot&) const = default;
};

/// An upgrade is under way, up to the service's word that it knows of it. Who ends the program now leaves
/// equipment half programmed, or its upgrade untold.
inline bool isBusy(const Snapshot& snapshot) {
  return snapshot.isRunning || snapshot.isReporting;
}

/// The user's wish to leave can be followed: nothing is under way, and no failure that came meanwhile would
/// go unseen.
inline bool mayClose(const Snapshot& snapshot) {
  const bool tellsOfFailure = snapshot.alert && snapshot.alert->alert != upgrade::Alert::procedureComplete;
  return !isBusy(snapshot) && !tellsOfFailure;
}

}  // namespace karvex::ui
