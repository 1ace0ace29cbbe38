#pragma once

#include <memory>

#include "foundation/Observers.hpp"
#include "foundation/Published.hpp"
#include "ui/DeviceExplorerView.hpp"
#include "ui/KarvexApp.hpp"
#include "upgrade/DeviceListView.hpp"
#include "upgrade/Platform.hpp"
#include "upgrade/SharedDeviceListModel.hpp"

namespace karvex::ui {

/// The root of the window without a toolkit: the action row and the device table below it. Main thread.
class ContentView {
 public:
  /// Both must outlive the view, and the view the jobs that it has on the main queue.
  ContentView(const upgrade::Platform& platform, KarvexApp& app);

  const std::shared_ptr<midikit::io::ObservableMIDIManager> midiManager;
  upgrade::NotificationManager& notificationManager;
  /// The sheet that sends the equipment report is open.
  foundation::Published<bool> showDeviceExplorer{false};
  /// The open sheet has a report under way.
  foundation::Published<bool> isSendingReport{false};
  upgrade::SharedDeviceListModel loadingViewModel;
  upgrade::DeviceListView deviceListView;

  /// The window is on the screen: starts the MIDI manager, and the table asks for its list. Without MIDI the
  /// program goes on; standard output says why.
  void appear();

  /// @name The buttons of the action row; a button that is disabled does nothing
  /// @{
  void uploadClicked();
  void refreshClicked();
  void syncClicked();
  /// @}

  /// The sheet, while it is open; a new one at each opening.
  std::shared_ptr<DeviceExplorerView> deviceExplorerView() const { return deviceExplorerView_; }

 private:
  void showOrHideDeviceExplorer(bool shown);

  const upgrade::Platform platform_;
  std::shared_ptr<DeviceExplorerView> deviceExplorerView_;
  foundation::Subscription explorerSubscription_;
  foundation::Subscription sendingSubscription_;
};

}  // namespace karvex::ui
