#include "device/DeviceExplorer.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "device/EquipmentReport.hpp"
#include "device/PortName.hpp"
#include "foundation/Log.hpp"

namespace karvex::device {
namespace {

using records::DeviceInfo;

constexpr std::array<std::int32_t, 13> acceptedProducts = {
    0x0476, records::halfKayProductId,
    0x0482, 0x0483,
    0x0486, 0x0487,
    0x048B, 0x048C,
    0x04D0, 0x04D1,
    0x04D2, 0x04D3,
    0x04D4,
};

/// These product IDs are shared with boards that are none of the equipment; the revision tells which are.
constexpr std::array<std::int32_t, 4> productsByRevision = {0x0485, 0x0488, 0x0489, 0x048A};
constexpr std::array<std::int32_t, 6> acceptedRevisions = {0x0200, 0x0211, 0x0212, 0x0279, 0x0280, 0x0281};

template <std::size_t N>
bool isIn(const std::array<std::int32_t, N>& list, std::int32_t value) {
  return std::find(list.begin(), list.end(), value) != list.end();
}

std::optional<DeviceInfo> recordOf(const UsbDevice& device) {
  const auto serialNumber = device.serialNumber.value_or("");
  const auto product = device.idProduct.value_or(0);
  if (serialNumber.empty()) {
    foundation::log::system(
        fmt::format("> KARVEX : USB device 16C0:{:04X} has no {}serial number : passed over", product,
                    device.serialNumber ? "usable " : ""));
    return std::nullopt;
  }
  const auto name = device.product.value_or("");
  const auto shownName = name.empty() ? std::string("Raw HID Device") : name;
  return DeviceInfo{
      .portName = portNameFor(serialNumber),
      .deviceName = shownName,
      .serialNumber = serialNumber,
      .USBvendorId = DeviceExplorer::PJRC_VENDOR_ID,
      .USBproductId = product,
      .USBbcdDevice = device.bcdDevice.value_or(0),
      .USBproductName = shownName,
  };
}

}  // namespace

bool DeviceExplorer::isEquipment(const UsbDevice& device) {
  if (device.idVendor != PJRC_VENDOR_ID) {
    return false;
  }
  const auto product = device.idProduct.value_or(0);
  return isIn(acceptedProducts, product) ||
         (isIn(productsByRevision, product) && isIn(acceptedRevisions, device.bcdDevice.value_or(0)));
}

bool DeviceExplorer::isHalfkay(const UsbDevice& device) {
  return device.idVendor == PJRC_VENDOR_ID && device.idProduct == records::halfKayProductId;
}

void DeviceExplorer::scanUSBDevices() {
  devices.set({});
  const int status = platform_.bus.forEachDevice([this](const UsbDevice& device) {
    if (!isEquipment(device)) {
      return;
    }
    if (auto record = recordOf(device)) {
      devices.update([&record](std::vector<DeviceInfo>& list) { list.push_back(std::move(*record)); });
    }
  });
  if (status != 0) {
    foundation::log::print(
        fmt::format("Erreur lors de l'obtention des services correspondants : {}\n", status));
  }
}

DeviceInfo DeviceExplorer::deviceForSerialNumber(const std::string& serialNumber) const {
  const auto list = devices.get();
  const auto found = std::find_if(list.begin(), list.end(), [&serialNumber](const DeviceInfo& device) {
    return device.serialNumber == serialNumber;
  });
  return found != list.end() ? *found : DeviceInfo{};
}

bool DeviceExplorer::isHalfkayDevicePresent() const {
  const auto list = devices.get();
  return std::any_of(list.begin(), list.end(), [](const DeviceInfo& device) {
    return device.USBproductId == records::halfKayProductId;
  });
}

bool DeviceExplorer::isSerialInterfacePresent(const std::string& serialNumber) const {
  return platform_.serialInterfaces.isPresent(interfaceNameFor(serialNumber));
}

foundation::Task<bool> DeviceExplorer::sendConfiguration() {
  const records::DeviceConfiguration configuration{.devices = devices.get()};
  co_await foundation::resumeOn(platform_.runtime.globalQueue());
  if (!foundation::isUrl(platform_.reportUrl)) {
    lastError.set("URL not set");
    co_return false;
  }
  std::string body;
  try {
    body = jsonOf(configuration);
  } catch (const std::exception& error) {
    lastError.set(error.what());
    co_return false;
  }
  co_return co_await post(std::move(body));
}

foundation::Task<bool> DeviceExplorer::post(std::string body) {
  foundation::UrlRequest request{
      .url = platform_.reportUrl,
      .method = "POST",
      .headers = {{"Content-Type", "application/json"}},
      .body = std::move(body),
  };
  try {
    const auto response = co_await platform_.urlSession.send(std::move(request));
    foundation::log::debug("> httpPost => resp = " + response.description());
  } catch (const foundation::UrlError& error) {
    lastError.set(error.what());
    co_return false;
  }
  lastError.set("");
  co_return true;
}

}  // namespace karvex::device
