#include "upgrade/BootableDeviceManager.hpp"

#include <algorithm>
#include <string>
#include <utility>

#include "foundation/Log.hpp"
#include "service/DescriptorDecoder.hpp"
#include "upgrade/MIDIIdentity.hpp"

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

/// What the service and the USB bus say of one device.
BootableDevice recordOf(const records::ServerDeviceDescriptor& listed, const records::DeviceInfo& attached) {
  return {
      .deviceName = attached.deviceName,
      .portSerialNumber = listed.deviceSerialNumber,
      .firmwareServerURL = listed.serverURL,
      .firmwareDir = listed.serverDirectory,
      .firmwareFile = listed.serverFile,
      .firmwareName = listed.firmwareName,
      .firmwareVersion = listed.firmwareVersion,
      .currentVersion = listed.currentVersion,
      .mcu = listed.mcu,
      .sequenceNumber = listed.sequenceNumber,
      .setupDelay = listed.setupDelay,
      .USBVendorId = attached.USBvendorId,
      .USBProductId = attached.USBproductId,
      .USBBCDDevice = attached.USBbcdDevice,
  };
}

void printLine(const std::string& line) {
  foundation::log::print(line + '\n');
}

}  // namespace

BootableDeviceManager::BootableDeviceManager(const Platform& platform)
    : deviceExplorer(platform.forExplorer()),
      runtime_(platform.runtime),
      midiService_(platform.midiService),
      service_(platform.urlSession, platform.serviceAddress) {}

Task<bool> BootableDeviceManager::fetchDeviceDescriptors() {
  using enum ListRequest::State;
  request_ = {underWay};
  co_await foundation::resumeOn(runtime_.globalQueue());
  if (!service_.canAskForDescriptors()) {
    co_await foundation::resumeOn(runtime_.mainQueue());
    isServerLoaded = false;
    request_ = {unreachable, "its address is no URL"};
    listRequest.set(request_);
    co_return false;
  }
  std::string answer;
  std::string failure;
  try {
    answer = co_await service_.requestDescriptors();
  } catch (const foundation::UrlError& error) {
    failure = error.what();
    printLine(failure);
  }
  auto decoded = service::decodeDescriptors(answer);
  for (const auto& message : decoded.messages) {
    printLine(message);
  }
  // Another refresh, or a scan that a change of the MIDI setup starts, may be at the list at this moment.
  co_await foundation::resumeOn(runtime_.mainQueue());
  if (decoded.descriptors) {
    deviceDescriptors = std::move(*decoded.descriptors);
  }
  isServerLoaded = true;
  request_ = {!failure.empty() ? unreachable : (decoded.descriptors ? answered : unreadable), failure};
  co_return true;
}

bool BootableDeviceManager::scanDevices(const midikit::io::ObservableMIDIManager& midiManager) {
  managedDevices.set({});
  deviceExplorer.scanUSBDevices();
  if (!isServerLoaded) {
    errorCode.set(serviceNotAsked);
    return false;
  }
  managedDevices.set(attachedDevices(midiManager));
  const bool halfkay = deviceExplorer.isHalfkayDevicePresent();
  errorCode.set(halfkay ? halfkayDevicePresent : scanComplete);
  listRequest.set(request_);
  return !halfkay;
}

std::vector<BootableDevice> BootableDeviceManager::attachedDevices(
    const midikit::io::ObservableMIDIManager& midiManager) const {
  const auto onBus = deviceExplorer.devices.get();
  const auto midiDevices = midiManager.observableDevices.get().devices;
  std::vector<BootableDevice> attached;
  for (const auto& listed : deviceDescriptors) {
    const auto found =
        std::ranges::find(onBus, listed.deviceSerialNumber, &records::DeviceInfo::serialNumber);
    if (found == onBus.end()) {
      continue;
    }
    auto device = recordOf(listed, *found);
    addMIDIFindings(device, midiDevices);
    attached.push_back(std::move(device));
  }
  return attached;
}

/// If two MIDI devices carry the serial number, the last one counts.
void BootableDeviceManager::addMIDIFindings(BootableDevice& device,
                                            const std::vector<midikit::io::MIDIDevice>& midiDevices) const {
  for (const auto& midiDevice : midiDevices) {
    const auto identity = readMIDIIdentity(*midiService_, midiDevice.coreMIDIObjectRef);
    if (identity && identity->serialNumber == device.portSerialNumber) {
      device.midiRef = midiDevice.coreMIDIObjectRef;
      device.isOffline = identity->offline;
      device.deviceName = midiDevice.name;
    }
  }
}

void BootableDeviceManager::refreshOfflineStates(const midikit::io::ObservableMIDIManager& midiManager) {
  auto devices = managedDevices.get();
  if (devices.empty()) {
    scanDevices(midiManager);
    return;
  }
  for (auto& device : devices) {
    if (!device.midiRef) {
      continue;
    }
    if (const auto identity = readMIDIIdentity(*midiService_, *device.midiRef)) {
      device.isOffline = identity->offline;
    }
  }
  managedDevices.set(std::move(devices));
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
