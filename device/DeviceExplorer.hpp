#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "device/platform/SerialInterfaces.hpp"
#include "device/platform/UsbBus.hpp"
#include "foundation/Published.hpp"
#include "foundation/net/UrlSession.hpp"
#include "foundation/run/Runtime.hpp"
#include "foundation/run/Task.hpp"
#include "records/DeviceInfo.hpp"
#include "records/UsbIds.hpp"

namespace karvex::device {

/// What an explorer looks with, and where it reports to. What is referred to must outlive the explorer.
struct ExplorerPlatform {
  foundation::Runtime& runtime;
  UsbBus& bus;
  SerialInterfaces& serialInterfaces;
  foundation::UrlSession& urlSession;
  std::string reportUrl;  ///< where the service takes the equipment report
};

/// The boards on the USB bus that can belong to the equipment. Each explorer has a list of its own, which
/// changes only when this explorer scans: it goes stale with the bus, so callers scan again rather than trust
/// it. All operations are for the main thread.
class DeviceExplorer {
 public:
  static constexpr std::int32_t PJRC_VENDOR_ID = records::boardVendorId;

  /// True for what a scan finds, if it has a serial number: a board of the equipment, in either mode.
  /// Thread-safe: yes.
  /// Realtime-safe: yes.
  static bool isEquipment(const UsbDevice& device);
  /// True for a board in its HalfKay bootloader.
  /// Thread-safe: yes.
  /// Realtime-safe: yes.
  static bool isHalfkay(const UsbDevice& device);

  explicit DeviceExplorer(ExplorerPlatform platform) : platform_(std::move(platform)) {}

  /// What the last scan found, in bus order.
  foundation::Published<std::vector<records::DeviceInfo>> devices;
  /// What went wrong with the last report to the service; empty when nothing did.
  foundation::Published<std::string> lastError;

  /// The first record with exactly this serial number; without one, a record whose texts are empty.
  virtual records::DeviceInfo deviceForSerialNumber(const std::string& serialNumber) const;

  /// Fills `devices` anew; observers see it emptied and then grow by one record at a time. A bus that can't
  /// be walked leaves it empty and says so on standard output.
  virtual void scanUSBDevices();

  /// True if the last scan found a board in its HalfKay bootloader.
  virtual bool isHalfkayDevicePresent() const;

  /// Posts `devices`, as they are when this starts, to the service as the equipment report. Gives true if the
  /// service answered at all; `lastError` then is empty, else it says what went wrong. Sets it on the global
  /// queue, where the awaiting coroutine goes on too. The explorer must live until then.
  virtual foundation::Task<bool> sendConfiguration();

  virtual ~DeviceExplorer() = default;
  DeviceExplorer(const DeviceExplorer&) = delete;
  DeviceExplorer& operator=(const DeviceExplorer&) = delete;

  /// Asks the system, not the list, whether the board's serial interface is there at this moment.
  bool isSerialInterfacePresent(const std::string& serialNumber) const;

 private:
  foundation::Task<bool> post(std::string body);

  ExplorerPlatform platform_;
};

}  // namespace karvex::device
