#pragma once

#include <memory>
#include <optional>
#include <string>

#include "MIDIKitIO/manager/ObservableMIDIManager.hpp"
#include "device/SerialPortManagement.hpp"
#include "foundation/Observers.hpp"
#include "foundation/Published.hpp"
#include "foundation/run/Task.hpp"
#include "foundation/run/Timer.hpp"
#include "foundation/text/Uuid.hpp"
#include "upgrade/Alert.hpp"
#include "upgrade/BootableDeviceManager.hpp"
#include "upgrade/NotificationManager.hpp"
#include "upgrade/Platform.hpp"
#include "upgrade/SharedDeviceListModel.hpp"
#include "upgrade/StatusManager.hpp"
#include "upgrade/StopNotice.hpp"

namespace karvex::upgrade {

/// The state behind the device table, and the upgrade run, without a toolkit. A run begins with the selected
/// device and takes each one behind it in turn. It is carried by short tasks on the main queue and by a tick
/// of 0.25 s, which follows the load status and moves the run from one device to the next. Sleeps block the
/// main queue: a front draws on a thread of its own.
///
/// Main thread. The view must outlive the jobs that it has on the main queue.
class DeviceListView {
 public:
  /// Starts the tick. Everything referred to must outlive the view.
  DeviceListView(const Platform& platform, NotificationManager& notificationManager,
                 std::shared_ptr<midikit::io::ObservableMIDIManager> midiManager,
                 SharedDeviceListModel& loadingViewModel);
  /// Takes the handler of its notifications from the manager.
  ~DeviceListView();
  DeviceListView(const DeviceListView&) = delete;
  DeviceListView& operator=(const DeviceListView&) = delete;

 private:
  const Platform platform_;

 public:
  /// @name The state
  /// @{
  NotificationManager& notificationManager;
  const std::shared_ptr<midikit::io::ObservableMIDIManager> midiManager;
  SharedDeviceListModel& loadingViewModel;
  BootableDeviceManager deviceManager;
  StatusManager statusManager;
  device::SerialPortManagement serialPortMgr;
  foundation::Published<std::optional<foundation::Uuid>> selectedDeviceId;
  foundation::Published<bool> procedureComplete{false};
  foundation::Published<std::string> uploadErrorText;
  foundation::Published<bool> uploadErrorShowModal{false};
  bool autoSelect = false;  ///< the next change of the selection is the run's own
  foundation::Published<std::string> downloadErrorText;
  foundation::Published<bool> downloadErrorShowModal{false};
  foundation::Published<bool> portBusyError{false};
  foundation::Published<bool> halfkayModeDetected{false};
  foundation::Published<bool> halfkayModeFailed{false};
  device::DeviceExplorer deviceExplorer;
  /// @}

  /// @name What a front asks for
  /// @{

  /// The table is on the screen: fills it.
  void appear();
  /// Selects a row, or none. While a run is going the selection is the run's, and this does nothing.
  void select(std::optional<foundation::Uuid> device);
  /// True while the alert is up.
  bool isUp(Alert alert) const;
  /// The message of the alert as it is now.
  std::string messageOf(Alert alert) const;
  /// The OK of an alert. Does nothing if it isn't up.
  void confirm(Alert alert);
  /// @}

  /// Every 0.25 s: follows the load status and writes it into the row of the device in work.
  void timerTick();

  /// The flag that an alert hangs on.
  static foundation::Published<bool> DeviceListView::* flagOf(Alert alert);

  /// How many devices' upgrades the service is being told of at this moment: who ends the program now leaves
  /// them untold.
  foundation::Published<int> reportsUnderWay{0};

  /// What no dialog says of the last run: why it stopped, and what to do. Empty when there is nothing to say,
  /// and again from the next run or refresh on.
  foundation::Published<std::string> stopNotice;

  /// How many tasks of the view have not ended yet, transfers and reports among them.
  int tasksUnderWay() const { return tasksUnderWay_; }

 private:
  // DeviceListView.cpp: the list, the selection, the controls
  void selectionChanged(const std::optional<foundation::Uuid>& selected);
  void loadingChanged(bool inProgress);
  void refreshAsked();
  void installNotificationHandler();
  foundation::Task<> loadDeviceList();
  foundation::Task<> refreshDeviceList();
  /// Asks the service and scans. False if a board sits in its bootloader.
  foundation::Task<bool> rebuildList();
  void startRefresh();
  void resetFirstHalfkayBoard();
  void start(foundation::Task<> task);
  foundation::Task<> counted(foundation::Task<> task);

  // DeviceListViewRun.cpp: the upgrade run
  foundation::Task<> uploadFirstDevice(records::BootableDevice device);
  foundation::Task<> uploadNextDevice(records::BootableDevice device);
  foundation::Task<std::string> downloadFirmware(records::BootableDevice device);
  bool doUpload(const std::string& fileUrl, const records::BootableDevice& device);
  void beginStatus(std::uint32_t status);
  void showStatus(std::uint32_t status);
  void loadEnded(const foundation::Uuid& id);
  foundation::Task<> reportCompletion(foundation::Uuid id);
  void goOnWith(const records::BootableDevice& next);
  void endRun();
  void stopRun(SilentStop stop, const std::string& reason);
  void tell(SilentStop stop);

  std::optional<foundation::Uuid> lastSelected_;
  bool wasLoading_ = false;
  bool hasNotificationHandler_ = false;
  int tasksUnderWay_ = 0;
  std::string serialNumberInWork_;  ///< of the device that the run is at, or stopped at
  foundation::Subscription selectionSubscription_;
  foundation::Subscription loadingSubscription_;
  foundation::Subscription notificationPublisher_;
  foundation::Timer timer_;
};

}  // namespace karvex::upgrade
