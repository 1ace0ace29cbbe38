#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/text/Uuid.hpp"
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
  bool isProgramming = false;  ///< by its status, which a row keeps when its run has ended

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
  std::string emptyText;  ///< why there are no rows, in one line; empty if there are some
  bool isAsking = false;  ///< the service's list is waited for
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

/// The row that has the bar of the load: upgrade::currentLoadProgress() is about it. There is one while a run
/// is going and its device is being programmed.
inline bool showsBar(const Snapshot& snapshot, const DeviceRow& row) {
  return snapshot.isRunning && snapshot.selected == row.id && row.isProgramming;
}

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
