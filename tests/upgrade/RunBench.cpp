#include "tests/upgrade/RunBench.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

#include "device/PortName.hpp"
#include "foundation/Log.hpp"
#include "foundation/NotificationCenter.hpp"
#include "loader/load_status.hpp"
#include "rig/ExpectedFlash.hpp"

namespace karvex::upgrade {
namespace {

namespace log = foundation::log;
using namespace std::chrono_literals;

/// Longer than any run of a test takes; a run that is still going then never ends.
constexpr auto mostTime = 3h;

}  // namespace

device::OpenedTerminal FlakyTerminals::open(const std::string& path, device::PortMode mode) {
  if (mode == device::PortMode::receive && failsRequest.contains(path)) {
    return device::TerminalRefusal{.cause = device::TerminalRefusal::Cause::absent};
  }
  return nodes_.open(path, mode);
}

RunBench::RunBench(std::size_t boards)
    : plan{.boards = boards},
      rig(runtime, plan, {}),
      midiManager(midikit::io::ObservableMIDIManager::create(
          {.service = rig.midiService, .runtime = runtime, .clientName = "RunBench"})),
      served_(app::servedDevices(plan, rig.service.baseAddress())) {
  loader::set_load_status(loader::LOAD_STATUS_IDLE);
  log::redirectSystem([this](std::string_view text) { logged.emplace_back(text); });
  log::redirectPrint([this](std::string_view text) { printed += text; });
  log::redirectDebug([this](std::string_view text) { debugged.emplace_back(text); });
  midiManager->start();
  auto platform = rig.platform();
  view = std::make_unique<DeviceListView>(
      Platform{platform.runtime, platform.urlSession, platform.usbBus, platform.serialInterfaces, terminals,
               platform.midiService, platform.serviceAddress},
      notificationManager, midiManager, model);
  statusSubscription_ = view->deviceManager.managedDevices.observe([this](const auto& devices) {
    for (const auto& device : devices) {
      auto& statuses = statuses_[device.portSerialNumber];
      if (statuses.empty() || statuses.back() != device.status) {
        statuses.push_back(device.status);
      }
    }
  });
}

RunBench::~RunBench() {
  log::redirectSystem(nullptr);
  log::redirectPrint(nullptr);
  log::redirectDebug(nullptr);
  loader::set_load_status(loader::LOAD_STATUS_IDLE);
}

void RunBench::runFor(foundation::Duration span) {
  runtime.mainQueue().postAt(runtime.clock().now() + span, [this] { runtime.stopMain(); });
  runtime.runMain();
}

void RunBench::settle() {
  const auto start = runtime.clock().now();
  do {
    runFor(500ms);
    ASSERT_LT(runtime.clock().now() - start, mostTime) << "the run never ends";
  } while (view->tasksUnderWay() != 0 || model.loadingInProgress.get());
}

void RunBench::appear() {
  runtime.mainQueue().post([this] { view->appear(); });
  settle();
}

void RunBench::upgradeFrom(std::size_t row) {
  runtime.mainQueue().post([this, row] {
    view->select(rows().at(row).id);
    ASSERT_FALSE(model.isUploadButtonDisabled.get()) << "row " << row << " can't be upgraded";
    model.loadingInProgress.set(true);
  });
  settle();
}

void RunBench::confirm(Alert alert) {
  runtime.mainQueue().post([this, alert] { view->confirm(alert); });
  settle();
}

void RunBench::refresh() {
  runtime.mainQueue().post(
      [] { foundation::NotificationCenter::defaultCenter().post(scanDevicesNotification); });
  settle();
}

std::string RunBench::serialAt(std::size_t place) const {
  return app::serialNumberOf(place);
}

std::string RunBench::portAt(std::size_t place) const {
  return device::portNameFor(serialAt(place));
}

std::vector<std::uint32_t> RunBench::statusesOf(std::size_t place) const {
  const auto statuses = statuses_.find(serialAt(place));
  return statuses == statuses_.end() ? std::vector<std::uint32_t>() : statuses->second;
}

void RunBench::forget() {
  statuses_.clear();
  logged.clear();
  debugged.clear();
  printed.clear();
}

std::optional<Alert> RunBench::alert() const {
  std::optional<Alert> up;
  for (const auto alert : alertsInOrder) {
    if (view->isUp(alert)) {
      EXPECT_FALSE(up) << "two alerts are up";
      up = alert;
    }
  }
  return up;
}

bool RunBench::flashMatches(std::size_t place) {
  bool matches = false;
  rig.bus.inspect(serialAt(place), [&](const rig::VirtualBoard& board) {
    const auto expected = rig::expectedFlash(app::firmwareAt(place), board.kind());
    matches = expected && std::ranges::equal(*expected, board.flash());
  });
  return matches;
}

std::size_t RunBench::completionsOf(std::size_t place) const {
  return static_cast<std::size_t>(std::ranges::count_if(rig.service.requests(), [&](const auto& request) {
    return request.path == "/services/uploadComplete.php" &&
           request.body.starts_with("DEVICE_SERIAL_NUMBER=" + serialAt(place) + "&");
  }));
}

bool RunBench::controlsAreFree() const {
  return model.isUploadButtonDisabled.get() && !model.loadingInProgress.get() &&
         !model.actionButtonsDisabled.get();
}

void RunBench::list(std::size_t place, const std::function<void(rig::ServedDevice&)>& change) {
  auto devices = served_;
  change(devices.at(place));
  rig.service.setDevices(devices);
}

void RunBench::listRight() {
  rig.service.setDevices(served_);
}

void RunBench::inspect(std::size_t place, const std::function<void(rig::VirtualBoard&)>& change) {
  rig.bus.inspect(serialAt(place), change);
}

}  // namespace karvex::upgrade
