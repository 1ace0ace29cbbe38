#pragma once

#include <cstdint>
#include <vector>

#include "MIDIKitIO/manager/ObservableMIDIManager.hpp"
#include "device/DeviceExplorer.hpp"
#include "foundation/Published.hpp"
#include "foundation/run/Task.hpp"
#include "foundation/text/Uuid.hpp"
#include "records/BootableDevice.hpp"
#include "records/ServerDeviceDescriptor.hpp"
#include "service/FirmwareService.hpp"
#include "upgrade/ListRequest.hpp"
#include "upgrade/Platform.hpp"

namespace karvex::upgrade {

/// What BootableDeviceManager::errorCode can be.
enum ScanResult : std::int64_t { scanComplete = 0, serviceNotAsked = 1, halfkayDevicePresent = 2 };

/// The devices that can be upgraded, in the order of the upgrade: that of the service's list. Nothing sorts
/// them anew; a device's place is what makes one device the next of another. Main thread, but for what says
/// otherwise.
class BootableDeviceManager {
 public:
  explicit BootableDeviceManager(const Platform& platform);

  foundation::Published<std::vector<records::BootableDevice>> managedDevices;
  /// Result of the last scan: a ScanResult.
  foundation::Published<std::int64_t> errorCode{0};
  /// What became of the list that the rows are from. Its answer is published after the scan that it leads to.
  foundation::Published<ListRequest> listRequest;
  /// The service's last good answer.
  std::vector<records::ServerDeviceDescriptor> deviceDescriptors;
  /// True once the service was asked, whatever came of it.
  bool isServerLoaded = false;
  device::DeviceExplorer deviceExplorer;

  /// Asks the service for its list. Gives false only if the service's address is no URL. An answer that can't
  /// be had or decoded leaves `deviceDescriptors` as it is and says so on standard output. Works on the
  /// global queue; the awaiting coroutine goes on on the main thread. The manager must live until then.
  foundation::Task<bool> fetchDeviceDescriptors();

  /// Builds the list anew from what the service told last, what is on the USB bus, and what the MIDI layer
  /// knows of it: one record for each listed device that is attached. True, and `errorCode` 0, when all is
  /// well. False with `errorCode` 1 and an empty list if the service was never asked, and with 2 if a board
  /// sits in its HalfKay bootloader; the list is complete then.
  bool scanDevices(const midikit::io::ObservableMIDIManager& midiManager);

  /// Reads anew whether the listed devices are online; scans if there are none. A device that the MIDI layer
  /// doesn't know, or no longer, keeps its mark.
  void refreshOfflineStates(const midikit::io::ObservableMIDIManager& midiManager);

  /// A copy of the record behind the one with that id. There must be one.
  records::BootableDevice nextDevice(const foundation::Uuid& after) const;

  /// Sets the status of the first record with that id; an unknown id changes nothing.
  void updateStatus(const foundation::Uuid& id, std::uint32_t status);

  /// Makes the target version the current one in the table, and then tells the service that the device has
  /// been upgraded. What the service answers, or that it doesn't, changes nothing. To be started on the main
  /// thread; the awaiting coroutine goes on there. The manager must live until then.
  foundation::Task<> sendUploadComplete(foundation::Uuid id);

 private:
  std::vector<records::BootableDevice> attachedDevices(
      const midikit::io::ObservableMIDIManager& midiManager) const;
  void addMIDIFindings(records::BootableDevice& device,
                       const std::vector<midikit::io::MIDIDevice>& midiDevices) const;

  ListRequest request_;  ///< whose answer, once it is there, the next scan publishes
  foundation::Runtime& runtime_;
  std::shared_ptr<const midikit::io::MIDIService> midiService_;
  service::FirmwareService service_;
};

}  // namespace karvex::upgrade
