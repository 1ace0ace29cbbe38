#pragma once

#include <cstddef>
#include <cstdint>

#include "ui/Snapshot.hpp"
#include "upgrade/LoadProgress.hpp"

/// Snapshots of usual moments, made by hand.
namespace karvex::ui::qt::samples {

/// No row, and why.
Snapshot empty();
/// Waiting: five devices, the second one up to date, nothing selected.
Snapshot idle();
/// The same with a selected row whose device can be upgraded.
Snapshot selected();
/// The third device is being programmed.
Snapshot running();
/// That run has stopped, for a reason that no dialog tells of; its row is as it was.
Snapshot stopped();
upgrade::LoadProgress progress();
Snapshot withAlert(upgrade::Alert alert);
Snapshot withSheet(bool isSending);
/// A row for each load status, and some that put the table to the test: long and strange names.
Snapshot everyStatus();

/// A row as the core makes it for that status; `seed` tells rows apart.
DeviceRow rowWith(std::uint32_t status, std::uint8_t seed);

}  // namespace karvex::ui::qt::samples
