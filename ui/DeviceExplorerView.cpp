#include "ui/DeviceExplorerView.hpp"

#include <utility>

#include "foundation/Log.hpp"

namespace karvex::ui {

std::shared_ptr<DeviceExplorerView> DeviceExplorerView::create(const upgrade::Platform& platform,
                                                               std::function<void()> dismiss) {
  return std::shared_ptr<DeviceExplorerView>(new DeviceExplorerView(platform, std::move(dismiss)));
}

DeviceExplorerView::DeviceExplorerView(const upgrade::Platform& platform, std::function<void()> dismissAction)
    : dismiss(std::move(dismissAction)), deviceList(platform.forExplorer()), runtime_(platform.runtime) {}

void DeviceExplorerView::sendClicked() {
  foundation::spawn(runtime_.mainQueue(), send(shared_from_this()));
}

foundation::Task<> DeviceExplorerView::send(std::shared_ptr<DeviceExplorerView> self) {
  self->isLoading.set(true);
  self->deviceList.scanUSBDevices();
  const bool isSent = co_await self->deviceList.sendConfiguration();
  co_await foundation::resumeOn(self->runtime_.mainQueue());
  self->isLoading.set(false);
  if (!isSent) {
    foundation::log::debug("Error => " + self->deviceList.lastError.get());
  } else if (const auto dismissSheet = self->dismiss) {
    dismissSheet();
  }
}

}  // namespace karvex::ui
