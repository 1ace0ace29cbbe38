#include "app/rig/ServiceCommands.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>

#include "app/rig/RigPlatform.hpp"
#include "foundation/run/Task.hpp"
#include "upgrade/BootableDeviceManager.hpp"

namespace karvex::app {
namespace {

using foundation::Task;
using upgrade::BootableDeviceManager;

/// Besides what matches, there is a device that only the service knows and a board that only the bus has.
EquipmentPlan planFor(const ServiceOptions& options) {
  return {.boards = options.boards, .listedButAbsent = 1, .attachedUnlisted = 1};
}

/// The rig, and the program's own objects on it.
class ServiceRig {
 public:
  ServiceRig(const CommonOptions& common, const ServiceOptions& options)
      : runtime(makeRuntime(common)),
        rig(*runtime, planFor(options), options.faults),
        manager(rig.platform()) {}

  /// Runs the task on the main queue to its end.
  void run(Task<> task) {
    foundation::spawn(runtime->mainQueue(), whole(std::move(task)));
    runtime->runMain();
  }

  std::unique_ptr<foundation::Runtime> runtime;
  RigPlatform rig;
  BootableDeviceManager manager;

 private:
  Task<> whole(Task<> task) {
    co_await std::move(task);
    runtime->stopMain();
  }
};

void printListed(const BootableDeviceManager& manager) {
  say("The service lists:");
  for (const auto& device : manager.deviceDescriptors) {
    say(fmt::format("  {:<10} {:<16} {:<18} {} -> {}  {}{}{}", device.deviceSerialNumber, device.mcu,
                    device.firmwareName, device.currentVersion, device.firmwareVersion, device.serverURL,
                    device.serverDirectory, device.serverFile));
  }
}

/// Gives how many of the listed devices are attached.
std::size_t printMatches(const BootableDeviceManager& manager) {
  std::size_t matches = 0;
  for (const auto& listed : manager.deviceDescriptors) {
    const auto found = manager.deviceExplorer.deviceForSerialNumber(listed.deviceSerialNumber);
    const bool isAttached = !found.serialNumber.empty();
    matches += isAttached ? 1U : 0U;
    say(fmt::format("  {:<10} {}", listed.deviceSerialNumber,
                    isAttached ? fmt::format("{} on {}", found.deviceName, found.portName) : "not attached"));
  }
  return matches;
}

Task<> list(ServiceRig& rig, bool& isListed) {
  co_await rig.manager.fetchDeviceDescriptors();
  co_await foundation::resumeOn(rig.runtime->mainQueue());
  printListed(rig.manager);
  showBus(rig.manager.deviceExplorer);
  say("Of the list, these are attached:");
  const auto matches = printMatches(rig.manager);
  say(fmt::format("{} of {} listed devices are attached; {} boards are on the bus.", matches,
                  rig.manager.deviceDescriptors.size(), rig.manager.deviceExplorer.devices.get().size()));
  isListed = !rig.manager.deviceDescriptors.empty();
}

Task<> report(ServiceRig& rig, bool& isSent) {
  rig.manager.deviceExplorer.scanUSBDevices();
  isSent = co_await rig.manager.deviceExplorer.sendConfiguration();
  co_await foundation::resumeOn(rig.runtime->mainQueue());
}

void printReceived(const ServiceRig& rig) {
  const auto requests = rig.rig.service.requests();
  if (requests.empty()) {
    say("The service received nothing.");
  }
  for (const auto& request : requests) {
    say(fmt::format("The service received {} {} ({}):\n{}", request.method, request.path,
                    request.header("Content-Type"), request.body));
  }
}

}  // namespace

int runList(const CommonOptions& common, const ServiceOptions& options) {
  ServiceRig rig(common, options);
  bool isListed = false;
  rig.run(list(rig, isListed));
  return isListed ? exitLoaded : exitLoadFailed;
}

int runReport(const CommonOptions& common, const ServiceOptions& options) {
  ServiceRig rig(common, options);
  bool isSent = false;
  rig.run(report(rig, isSent));
  printReceived(rig);
  const auto error = rig.manager.deviceExplorer.lastError.get();
  say(isSent ? "The report was sent, and the service answered." : "The report could not be sent: " + error);
  return isSent ? exitLoaded : exitLoadFailed;
}

}  // namespace karvex::app
