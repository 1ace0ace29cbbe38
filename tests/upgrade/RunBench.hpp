#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "app/rig/RigPlatform.hpp"
#include "foundation/VirtualRuntime.hpp"
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

/// The device table on a rig of boards, in virtual time, with the three log channels caught.
class RunBench {
 public:
  explicit RunBench(std::size_t boards = 5);
  ~RunBench();
  RunBench(const RunBench&) = delete;
  RunBench& operator=(const RunBench&) = delete;

  /// Fills the table.
  void appear();
  /// Selects a row, clicks on the Upload button, and runs until everything has ended.
  void upgradeFrom(std::size_t row);
  void confirm(Alert alert);
  void refresh();
  /// Runs until no run is going and no task is under way.
  void settle();
  void runFor(foundation::Duration span);

  std::vector<records::BootableDevice> rows() const { return view->deviceManager.managedDevices.get(); }
  std::string serialAt(std::size_t place) const;
  std::string portAt(std::size_t place) const;
  /// The statuses that a row had, in order, since the last call of `forget`.
  std::vector<std::uint32_t> statusesOf(std::size_t place) const;
  void forget();
  /// The alert that is up, if exactly one is.
  std::optional<Alert> alert() const;
  bool flashMatches(std::size_t place);
  /// How often the service was told that the device was upgraded.
  std::size_t completionsOf(std::size_t place) const;
  bool controlsAreFree() const;

  /// Changes what the service lists of one device.
  void list(std::size_t place, const std::function<void(rig::ServedDevice&)>& change);
  /// Lists everything as it should be.
  void listRight();
  /// Changes what is wrong with one board.
  void inspect(std::size_t place, const std::function<void(rig::VirtualBoard&)>& change);

  foundation::VirtualRuntime runtime;
  app::EquipmentPlan plan;
  app::RigPlatform rig;
  FlakyTerminals terminals{rig.terminals};
  NotificationManager notificationManager;
  std::shared_ptr<midikit::io::ObservableMIDIManager> midiManager;
  SharedDeviceListModel model;
  std::unique_ptr<DeviceListView> view;

  std::vector<std::string> logged;
  std::string printed;
  std::vector<std::string> debugged;

 private:
  std::vector<rig::ServedDevice> served_;
  std::map<std::string, std::vector<std::uint32_t>> statuses_;
  foundation::Subscription statusSubscription_;
};

}  // namespace karvex::upgrade
