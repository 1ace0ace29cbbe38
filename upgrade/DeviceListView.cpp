#include "upgrade/DeviceListView.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <utility>

#include "foundation/Log.hpp"
#include "foundation/NotificationCenter.hpp"
#include "loader/halfkay.hpp"
#include "loader/load_status.hpp"

namespace karvex::upgrade {
namespace {

using foundation::Task;
using foundation::Uuid;

constexpr std::chrono::milliseconds tickInterval{250};

}  // namespace

DeviceListView::DeviceListView(const Platform& platform, NotificationManager& notifications,
                               std::shared_ptr<midikit::io::ObservableMIDIManager> manager,
                               SharedDeviceListModel& model)
    : platform_(platform),
      notificationManager(notifications),
      midiManager(std::move(manager)),
      loadingViewModel(model),
      deviceManager(platform),
      serialPortMgr(platform.terminalNodes, platform.runtime),
      deviceExplorer(platform.forExplorer()),
      selectionSubscription_(selectedDeviceId.observe([this](const auto& id) { selectionChanged(id); })),
      loadingSubscription_(
          loadingViewModel.loadingInProgress.observe([this](bool loading) { loadingChanged(loading); })),
      notificationPublisher_(foundation::NotificationCenter::defaultCenter().observe(
          scanDevicesNotification, [this] { refreshAsked(); })),
      timer_(foundation::Timer::repeating(platform.runtime.clock(), platform.runtime.mainQueue(),
                                          tickInterval, [this] { timerTick(); })) {}

DeviceListView::~DeviceListView() {
  if (hasNotificationHandler_) {
    midiManager->setNotificationHandler(nullptr);
  }
}

void DeviceListView::start(Task<> task) {
  ++tasksUnderWay_;
  foundation::spawn(platform_.runtime.mainQueue(), counted(std::move(task)));
}

Task<> DeviceListView::counted(Task<> task) {
  co_await std::move(task);
  --tasksUnderWay_;
}

void DeviceListView::appear() {
  loadingViewModel.resetUploadControls();
  start(loadDeviceList());
}

void DeviceListView::refreshAsked() {
  notificationManager.notificationReceived.set(false);
  loadingViewModel.resetUploadControls();
  stopNotice.set("");
  startRefresh();
}

void DeviceListView::startRefresh() {
  start(refreshDeviceList());
}

Task<bool> DeviceListView::rebuildList() {
  deviceManager.listRequest.set({ListRequest::State::underWay});  // A front without rows knows why.
  deviceManager.managedDevices.set({});
  const bool isAsked = co_await deviceManager.fetchDeviceDescriptors();
  // A run that began during the exchange, on the list of an earlier one, keeps its rows.
  if (!isAsked || loadingViewModel.loadingInProgress.get()) {
    co_return true;
  }
  co_return deviceManager.scanDevices(*midiManager) || deviceManager.errorCode.get() != halfkayDevicePresent;
}

Task<> DeviceListView::loadDeviceList() {
  const bool isUsable = co_await rebuildList();
  if (isUsable) {
    installNotificationHandler();
  } else if (loader::get_load_status() != loader::LOAD_STATUS_ERROR_PERMISSION) {
    halfkayModeDetected.set(true);
  }
}

Task<> DeviceListView::refreshDeviceList() {
  const bool isUsable = co_await rebuildList();
  if (!isUsable) {
    halfkayModeDetected.set(true);
  }
}

void DeviceListView::installNotificationHandler() {
  hasNotificationHandler_ = true;
  midiManager->setNotificationHandler([this](const midikit::io::MIDIIONotification& notification,
                                             midikit::io::ObservableMIDIManager& manager) {
    if (notification == midikit::io::MIDIIONotification::setupChanged()) {
      deviceManager.refreshOfflineStates(manager);
    }
  });
}

void DeviceListView::select(std::optional<Uuid> device) {
  if (!loadingViewModel.loadingInProgress.get()) {
    selectedDeviceId.set(device);
  }
}

void DeviceListView::selectionChanged(const std::optional<Uuid>& selected) {
  if (std::exchange(lastSelected_, selected) == selected || std::exchange(autoSelect, false) || !selected) {
    return;
  }
  const auto devices = deviceManager.managedDevices.get();
  const auto device = std::ranges::find(devices, *selected, &records::BootableDevice::id);
  if (device != devices.end() &&
      deviceManager.deviceExplorer.isSerialInterfacePresent(device->portSerialNumber)) {
    loadingViewModel.enableUploadControls();
  }
}

void DeviceListView::loadingChanged(bool inProgress) {
  if (std::exchange(wasLoading_, inProgress) == inProgress || !inProgress) {
    return;
  }
  const auto devices = deviceManager.managedDevices.get();
  const auto selected = selectedDeviceId.get();
  const auto device = std::ranges::find_if(
      devices, [&selected](const records::BootableDevice& candidate) { return candidate.id == selected; });
  if (device == devices.end()) {
    loadingViewModel.resetUploadControls();
    return;
  }
  stopNotice.set("");
  loadingViewModel.isUploadButtonDisabled.set(true);
  loadingViewModel.actionButtonsDisabled.set(true);
  start(uploadFirstDevice(*device));
}

foundation::Published<bool> DeviceListView::* DeviceListView::flagOf(Alert alert) {
  switch (alert) {
    case Alert::halfkayModeDetected:
      return &DeviceListView::halfkayModeDetected;
    case Alert::procedureComplete:
      return &DeviceListView::procedureComplete;
    case Alert::uploadError:
      return &DeviceListView::uploadErrorShowModal;
    case Alert::portBusy:
      return &DeviceListView::portBusyError;
    case Alert::downloadError:
      return &DeviceListView::downloadErrorShowModal;
    case Alert::halfkayModeFailed:
      return &DeviceListView::halfkayModeFailed;
  }
  std::abort();
}

bool DeviceListView::isUp(Alert alert) const {
  return (this->*flagOf(alert)).get();
}

std::string DeviceListView::messageOf(Alert alert) const {
  return upgrade::messageOf(
      alert, alert == Alert::uploadError ? uploadErrorText.get() : serialPortMgr.errorText.get());
}

void DeviceListView::confirm(Alert alert) {
  if (!isUp(alert)) {
    return;
  }
  switch (alert) {
    case Alert::halfkayModeDetected:
      return resetFirstHalfkayBoard();
    case Alert::procedureComplete:
      return procedureComplete.set(false);
    case Alert::uploadError:
      uploadErrorShowModal.set(false);
      break;
    case Alert::portBusy:
      portBusyError.toggle();
      break;
    case Alert::downloadError:
      downloadErrorShowModal.set(false);
      break;
    case Alert::halfkayModeFailed:
      halfkayModeFailed.toggle();
      serialPortMgr.errorText.set("");
      break;
  }
  loadingViewModel.resetUploadControls();
  startRefresh();
}

/// The board that an earlier attempt left in its bootloader goes back to its firmware; a second one shows at
/// the next scan.
void DeviceListView::resetFirstHalfkayBoard() {
  serialNumberInWork_.clear();  // If this one may not be opened either, no run stops at it.
  selectedDeviceId.set(std::nullopt);
  loadingViewModel.resetUploadControls();
  halfkayModeDetected.toggle();
  foundation::log::system("> KARVEX : Resetting first Halfkay board found");
  loader::reset_halfkay_device();
  foundation::log::system("> KARVEX : HalfKay reset sent");
  loadingViewModel.resetUploadControls();
  startRefresh();
}

}  // namespace karvex::upgrade
