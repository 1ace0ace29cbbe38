#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/rig/RigPlatform.hpp"
#include "foundation/run/Task.hpp"
#include "foundation/run/VirtualRuntime.hpp"
#include "upgrade/DeviceListView.hpp"

namespace karvex::upgrade {

/// The serial ports of a rig, with ports that fail between the test of the port and the request.
class FlakyTerminals final : public device::TerminalNodes {
 public:
  explicit FlakyTerminals(device::TerminalNodes& nodes) : nodes_(nodes) {}
  device::OpenedTerminal open(const std::string& path, device::PortMode mode) override;

  std::set<std::string> failsRequest;  ///< port names that can be tested, and are gone for the request

 private:
  device::TerminalNodes& nodes_;
};

/// The upgrade on a rig of boards, in virtual time, with the three log channels caught.
class UpgradeFixture {
 public:
  /// With boards, the service lists them, MIDI knows them, and there is a table. Without, all that is the
  /// test's.
  explicit UpgradeFixture(std::size_t boards);
  ~UpgradeFixture();
  UpgradeFixture(const UpgradeFixture&) = delete;
  UpgradeFixture& operator=(const UpgradeFixture&) = delete;

  Platform platform();
  /// Makes the device table, in place of the one before.
  void makeView();
  std::shared_ptr<midikit::io::ObservableMIDIManager> startedManager();

  void runFor(foundation::Duration span);
  /// Runs a task that is started on the main queue to its end.
  void run(foundation::Task<> task);
  /// Runs until no run is going and no task is under way.
  void settle();

  /// @name What a user does; each runs until everything has ended
  /// @{
  void appear();
  void upgradeFrom(std::size_t row);
  void confirm(Alert alert);
  void refresh();
  /// @}

  std::vector<records::BootableDevice> rows() const { return view->deviceManager.managedDevices.get(); }
  std::string serialAt(std::size_t place) const { return app::serialNumberOf(place); }
  /// The alert that is up, if exactly one is.
  std::optional<Alert> alert() const;
  bool flashMatches(std::size_t place);
  /// The service was told that the device was upgraded.
  bool isReported(std::size_t place) const;
  bool controlsAreFree() const;

  /// Changes what the service lists of one device.
  void list(std::size_t place, const std::function<void(rig::ServedDevice&)>& change);
  /// The service misbehaves in this way, and in no other.
  void misbehave(const std::string& fault);
  /// This is wrong with the board, and nothing else.
  void spoil(std::size_t place, const std::string& fault);

  foundation::VirtualRuntime runtime;
  app::EquipmentPlan plan;
  app::RigPlatform rig;
  std::string address{rig.service.baseAddress()};
  FlakyTerminals terminals{rig.terminals};
  NotificationManager notificationManager;
  SharedDeviceListModel model;
  std::unique_ptr<DeviceListView> view;

  std::vector<std::string> logged;
  std::string printed;
  std::vector<std::string> debugged;
};

}  // namespace karvex::upgrade
