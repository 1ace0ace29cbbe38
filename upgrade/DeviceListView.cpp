#include "upgrade/DeviceListView.hpp"

#include <fmt/format.h>

#include <chrono>

#include "foundation/Log.hpp"
#include "loader/load_status.hpp"

namespace karvex::upgrade {
namespace {

constexpr std::chrono::milliseconds tickInterval{250};

}  // namespace

DeviceListView::DeviceListView(const Platform& platform, SharedDeviceListModel& loadingViewModel)
    : deviceManager(platform),
      loadingViewModel_(loadingViewModel),
      timer_(foundation::Timer::repeating(platform.runtime.clock(), platform.runtime.mainQueue(),
                                          tickInterval, [this] { timerTick(); })) {}

void DeviceListView::timerTick() {
  const auto [changed, status] = statusManager.pollStatus();
  if (!changed) {
    return;
  }
  if (statusManager.statusState.get() == status) {
    statusManager.statusChanged.set(false);
  }
  foundation::log::system(fmt::format("> KARVEX : Acknowledged Status value = {}", status));
  if (status == loader::LOAD_STATUS_ERROR_PERMISSION) {
    return stopOnMissingPermission();
  }
  const auto selected = selectedDeviceId.get();
  if (!selected) {
    return;
  }
  deviceManager.updateStatus(*selected, status);
  if (status == loader::LOAD_STATUS_SUCCESS && loadEnded) {
    loadEnded(*selected);
  }
}

void DeviceListView::stopOnMissingPermission() {
  loadingViewModel_.resetUploadControls();
  selectedDeviceId.set(std::nullopt);
}

}  // namespace karvex::upgrade
