#include "ui/Observation.hpp"

#include <fmt/format.h>

#include <algorithm>

#include "ui/EmptyTable.hpp"
#include "upgrade/LoadProgress.hpp"

namespace karvex::ui {
namespace {

Tone toneOfStatus(std::uint32_t status) {
  switch (status) {
    case 0:
      return Tone::gray;
    case 1:
    case 4:
    case 5:
    case 6:
      return Tone::orange;
    case 2:
    case 3:
      return Tone::white;
    case 7:
      return Tone::green;
    default:
      return Tone::red;
  }
}

}  // namespace

std::optional<AlertText> alertOf(const upgrade::DeviceListView& view) {
  const auto alert = std::ranges::find_if(upgrade::alertsInOrder, [&](auto one) { return view.isUp(one); });
  if (alert == upgrade::alertsInOrder.end()) {
    return std::nullopt;
  }
  return AlertText{*alert, std::string(upgrade::titleOf(*alert)), view.messageOf(*alert)};
}

DeviceRow rowOf(const records::BootableDevice& device) {
  const bool isUpToDate = device.currentVersion == device.firmwareVersion;
  return {
      .id = device.id,
      .device = fmt::format("{} - {}", device.sequenceNumber, device.deviceName.value_or("")),
      .serialNumber = "#" + device.portSerialNumber,
      .firmwareName = device.firmwareName,
      .currentVersion = device.currentVersion,
      .currentVersionTone = isUpToDate ? Tone::green : Tone::red,
      .targetVersion = device.firmwareVersion,
      .onlineMark = device.isOffline.value_or(false) ? Tone::orange : Tone::green,
      .status = device.status,
      .statusText = std::string(upgrade::statusText(device.status)),
      .statusTone = toneOfStatus(device.status),
      .isProgramming = upgrade::isProgramming(device.status),
  };
}

Snapshot snapshotOf(const ContentView& view) {
  Snapshot snapshot{
      .selected = view.deviceListView.selectedDeviceId.get(),
      .canUpload = !view.loadingViewModel.isUploadButtonDisabled.get(),
      .canAct = !view.loadingViewModel.actionButtonsDisabled.get(),
      .isRunning = view.loadingViewModel.loadingInProgress.get(),
      .isReporting = view.deviceListView.reportsUnderWay.get() != 0,
      .alert = alertOf(view.deviceListView),
      .stopNotice = view.deviceListView.stopNotice.get(),
      .showsDeviceExplorer = view.showDeviceExplorer.get(),
      .isSendingReport = view.isSendingReport.get(),
  };
  const auto& manager = view.deviceListView.deviceManager;
  for (const auto& device : manager.managedDevices.get()) {
    snapshot.rows.push_back(rowOf(device));
  }
  snapshot.isAsking = manager.listRequest.get().state == upgrade::ListRequest::State::underWay;
  if (snapshot.rows.empty()) {
    snapshot.emptyText =
        textOf(EmptyTable{.request = manager.listRequest.get(),
                          .listed = manager.deviceDescriptors.size(),
                          .seenOnTheBus = manager.deviceExplorer.devices.get().size(),
                          .isInProgrammingMode = manager.errorCode.get() == upgrade::halfkayDevicePresent});
  }
  return snapshot;
}

std::vector<foundation::Subscription> observe(ContentView& view, const std::function<void()>& changed) {
  const auto onChange = [changed](const auto&) { changed(); };
  auto& table = view.deviceListView;
  std::vector<foundation::Subscription> subscriptions;
  subscriptions.push_back(table.deviceManager.managedDevices.observe(onChange));
  subscriptions.push_back(table.deviceManager.errorCode.observe(onChange));
  subscriptions.push_back(table.deviceManager.listRequest.observe(onChange));
  subscriptions.push_back(table.selectedDeviceId.observe(onChange));
  subscriptions.push_back(table.uploadErrorText.observe(onChange));
  subscriptions.push_back(table.serialPortMgr.errorText.observe(onChange));
  subscriptions.push_back(table.stopNotice.observe(onChange));
  subscriptions.push_back(table.reportsUnderWay.observe(onChange));
  for (const auto alert : upgrade::alertsInOrder) {
    subscriptions.push_back((table.*upgrade::DeviceListView::flagOf(alert)).observe(onChange));
  }
  for (auto* flag :
       {&view.loadingViewModel.isUploadButtonDisabled, &view.loadingViewModel.loadingInProgress,
        &view.loadingViewModel.actionButtonsDisabled, &view.showDeviceExplorer, &view.isSendingReport}) {
    subscriptions.push_back(flag->observe(onChange));
  }
  return subscriptions;
}

}  // namespace karvex::ui
