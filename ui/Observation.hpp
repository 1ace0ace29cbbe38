#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "foundation/Observers.hpp"
#include "records/BootableDevice.hpp"
#include "ui/ContentView.hpp"
#include "ui/Snapshot.hpp"

/// From the application's objects to what a front draws. Main thread.
namespace karvex::ui {

DeviceRow rowOf(const records::BootableDevice& device);
/// The alert that a front shows: the first that is up.
std::optional<AlertText> alertOf(const upgrade::DeviceListView& view);
Snapshot snapshotOf(const ContentView& view);

/// Calls `changed` behind every change of what a snapshot shows, for as long as the result lives. More than
/// one call may come for one change.
[[nodiscard]] std::vector<foundation::Subscription> observe(ContentView& view,
                                                            const std::function<void()>& changed);

}  // namespace karvex::ui
