#include "upgrade/BootableDeviceManager.hpp"

#include <algorithm>
#include <string>
#include <utility>

#include "foundation/Log.hpp"
#include "service/DescriptorDecoder.hpp"

namespace karvex::upgrade {
namespace {

using foundation::Task;
using foundation::Uuid;
using records::BootableDevice;

template <typename List>
auto findDevice(List& list, const Uuid& id) {
  return std::find_if(list.begin(), list.end(),
                      [&id](const BootableDevice& device) { return device.id == id; });
}

void printLine(const std::string& line) {
  foundation::log::print(line + '\n');
}

}  // namespace

BootableDeviceManager::BootableDeviceManager(const Platform& platform)
    : deviceExplorer(platform.forExplorer()),
      runtime_(platform.runtime),
      service_(platform.urlSession, platform.serviceAddress) {}

Task<bool> BootableDeviceManager::fetchDeviceDescriptors() {
  co_await foundation::resumeOn(runtime_.globalQueue());
  if (!service_.canAskForDescriptors()) {
    isServerLoaded = false;
    co_return false;
  }
  std::string answer;
  try {
    answer = co_await service_.requestDescriptors();
  } catch (const foundation::UrlError& error) {
    printLine(error.what());
  }
  auto decoded = service::decodeDescriptors(answer);
  for (const auto& message : decoded.messages) {
    printLine(message);
  }
  if (decoded.descriptors) {
    deviceDescriptors = std::move(*decoded.descriptors);
  }
  isServerLoaded = true;
  co_return true;
}

BootableDevice BootableDeviceManager::nextDevice(const Uuid& after) const {
  const auto list = managedDevices.get();
  const auto next = *std::next(findDevice(list, after));
  foundation::log::debug(">Next Device serial number is : " + next.portSerialNumber);
  return next;
}

void BootableDeviceManager::updateStatus(const Uuid& id, std::uint32_t status) {
  const auto list = managedDevices.get();
  if (findDevice(list, id) != list.end()) {
    managedDevices.update(
        [&](std::vector<BootableDevice>& devices) { findDevice(devices, id)->status = status; });
  }
}

Task<> BootableDeviceManager::sendUploadComplete(Uuid id) {
  const auto list = managedDevices.get();
  const auto upgraded = findDevice(list, id);
  if (upgraded == list.end()) {
    co_return;
  }
  managedDevices.update([&id](std::vector<BootableDevice>& devices) {
    const auto device = findDevice(devices, id);
    device->currentVersion = device->firmwareVersion;
  });
  if (!service_.canReportCompletion()) {
    co_return;
  }
  service::UploadCompletion completion{
      .deviceSerialNumber = upgraded->portSerialNumber,
      .firmwareName = upgraded->firmwareName,
      .firmwareVersion = upgraded->firmwareVersion,
  };
  try {
    co_await service_.reportCompletion(std::move(completion));
  } catch (const foundation::UrlError& error) {
    foundation::log::debug(error.what());
  }
  co_await foundation::resumeOn(runtime_.mainQueue());
}

}  // namespace karvex::upgrade
