#pragma once

#include <functional>
#include <optional>

#include "foundation/Published.hpp"
#include "foundation/Timer.hpp"
#include "foundation/Uuid.hpp"
#include "upgrade/BootableDeviceManager.hpp"
#include "upgrade/Platform.hpp"
#include "upgrade/SharedDeviceListModel.hpp"
#include "upgrade/StatusManager.hpp"

namespace karvex::upgrade {

/// The state behind the device table, without a toolkit: what is selected, and what a load's progress does to
/// the rows. Main thread.
class DeviceListView {
 public:
  /// Starts the tick. The model must outlive the view.
  DeviceListView(const Platform& platform, SharedDeviceListModel& loadingViewModel);

  BootableDeviceManager deviceManager;
  StatusManager statusManager;
  foundation::Published<std::optional<foundation::Uuid>> selectedDeviceId;

  /// Called by the tick that acknowledges the success of the selected device's load.
  std::function<void(const foundation::Uuid& device)> loadEnded;

  /// Every 0.25 s: follows the load status and writes it into the row of the device in work.
  void timerTick();

 private:
  void stopOnMissingPermission();

  SharedDeviceListModel& loadingViewModel_;
  foundation::Timer timer_;
};

}  // namespace karvex::upgrade
