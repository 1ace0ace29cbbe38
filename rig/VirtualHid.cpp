#include "rig/VirtualHid.hpp"

#include <chrono>
#include <memory>

#include "records/UsbIds.hpp"

namespace karvex::rig {
namespace {

using Handle = VirtualBus::HalfKayBoard;

/// The boards are the only HID devices on the bus, and only while they are in their bootloader.

/// A transfer that fails takes this long on a real bus (a stall 2 to 9 ms were measured). Without it, a
/// report that is offered again and again would never get past a moment of virtual time.
constexpr std::chrono::milliseconds failedTransferTime{2};

Handle* handleOf(loader::hid_device* device) {
  return reinterpret_cast<Handle*>(device);
}

loader::hid_device* deviceOf(std::unique_ptr<Handle> handle) {
  return reinterpret_cast<loader::hid_device*>(handle.release());
}

loader::hid_access open(loader::hid_device* device) {
  if (handleOf(device)->deniesAccess) {
    delete handleOf(device);
    return loader::hid_access::not_permitted;
  }
  return loader::hid_access::opened;
}

}  // namespace

loader::hid_search VirtualHid::findFirst(std::uint16_t vendor, std::uint16_t product,
                                         loader::hid_device** device) {
  if (vendor != records::boardVendorId || product != records::halfKayProductId) {
    return loader::hid_search::none;
  }
  const auto board = bus_.firstHalfKayBoard();
  if (!board) {
    return loader::hid_search::none;
  }
  *device = deviceOf(std::make_unique<Handle>(*board));
  return loader::hid_search::found;
}

loader::hid_delivery VirtualHid::setOutputReport(const Handle& to, std::span<const std::uint8_t> report) {
  const auto outcome = bus_.sendReport(to, report);
  if (outcome == ReportOutcome::accepted) {
    return loader::hid_delivery::sent;
  }
  clock_.sleepFor(failedTransferTime);
  return outcome == ReportOutcome::gone ? loader::hid_delivery::gone : loader::hid_delivery::refused;
}

loader::hid_calls VirtualHid::calls() {
  return {
      .context = this,
      .find_first =
          [](void* self, std::uint16_t vendor, std::uint16_t product, loader::hid_device** device) {
            return static_cast<VirtualHid*>(self)->findFirst(vendor, product, device);
          },
      .open = [](void*, loader::hid_device* device) { return open(device); },
      .close = [](void*, loader::hid_device* device) { delete handleOf(device); },
      .set_output_report =
          [](void* self, loader::hid_device* device, const std::uint8_t* bytes, std::size_t length) {
            return static_cast<VirtualHid*>(self)->setOutputReport(*handleOf(device), {bytes, length});
          },
  };
}

}  // namespace karvex::rig
