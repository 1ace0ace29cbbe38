#include "ui/ContentView.hpp"

#include <exception>
#include <string>

#include "foundation/Log.hpp"
#include "foundation/NotificationCenter.hpp"

namespace karvex::ui {

ContentView::ContentView(const upgrade::Platform& platform, KarvexApp& app)
    : midiManager(app.midiManager),
      notificationManager(app.notificationManager),
      deviceListView(platform, app.notificationManager, app.midiManager, loadingViewModel),
      platform_(platform),
      explorerSubscription_(
          showDeviceExplorer.observe([this](bool shown) { showOrHideDeviceExplorer(shown); })) {}

void ContentView::showOrHideDeviceExplorer(bool shown) {
  if (shown && !deviceExplorerView_) {
    deviceExplorerView_ = DeviceExplorerView::create(platform_, [this] { showDeviceExplorer.set(false); });
    sendingSubscription_ =
        deviceExplorerView_->isLoading.observe([this](bool loading) { isSendingReport.set(loading); });
  } else if (!shown && deviceExplorerView_) {
    deviceExplorerView_->closed();
    deviceExplorerView_.reset();
    sendingSubscription_ = {};
    isSendingReport.set(false);
  }
}

void ContentView::appear() {
  try {
    midiManager->start();
  } catch (const std::exception& error) {
    foundation::log::print(std::string(error.what()) + '\n');
  }
  deviceListView.appear();
}

void ContentView::uploadClicked() {
  if (!loadingViewModel.isUploadButtonDisabled.get()) {
    loadingViewModel.loadingInProgress.set(true);
  }
}

void ContentView::refreshClicked() {
  if (!loadingViewModel.actionButtonsDisabled.get()) {
    foundation::NotificationCenter::defaultCenter().post(upgrade::scanDevicesNotification);
  }
}

void ContentView::syncClicked() {
  if (!loadingViewModel.actionButtonsDisabled.get()) {
    showDeviceExplorer.update([](bool& shown) { shown = !shown; });
  }
}

}  // namespace karvex::ui
