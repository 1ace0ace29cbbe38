#include "tests/upgrade/UpgradeFixture.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

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

foundation::Task<> thenStop(foundation::Task<> task, foundation::Runtime& runtime) {
  co_await std::move(task);
  runtime.stopMain();
}

}  // namespace

device::OpenedTerminal FlakyTerminals::open(const std::string& path, device::PortMode mode) {
  if (mode == device::PortMode::receive && failsRequest.contains(path)) {
    return device::TerminalRefusal{.cause = device::TerminalRefusal::Cause::absent};
  }
  return nodes_.open(path, mode);
}

UpgradeFixture::UpgradeFixture(std::size_t boards) : plan{.boards = boards}, rig(runtime, plan, {}) {
  loader::set_load_status(loader::LOAD_STATUS_IDLE);
  log::redirectSystem([this](std::string_view text) { logged.emplace_back(text); });
  log::redirectPrint([this](std::string_view text) { printed += text; });
  log::redirectDebug([this](std::string_view text) { debugged.emplace_back(text); });
  if (boards > 0) {
    makeView();
  } else {
    rig.midiDevices.reset();
  }
}

/// What is under way uses the rest.
UpgradeFixture::~UpgradeFixture() {
  runtime.finish();
  log::redirectSystem(nullptr);
  log::redirectPrint(nullptr);
  log::redirectDebug(nullptr);
  loader::set_load_status(loader::LOAD_STATUS_IDLE);
}

Platform UpgradeFixture::platform() {
  const auto whole = rig.platform();
  return {whole.runtime,
          whole.urlSession,
          whole.usbBus,
          whole.serialInterfaces,
          terminals,
          whole.midiService,
          service::ServiceAddress::at(address),
          [] { return device::RulesState::missing; }};
}

std::shared_ptr<midikit::io::ObservableMIDIManager> UpgradeFixture::startedManager() {
  auto manager = midikit::io::ObservableMIDIManager::create(
      {.service = rig.midiService, .runtime = runtime, .clientName = "UpgradeFixture"});
  manager->start();
  return manager;
}

void UpgradeFixture::makeView() {
  view = std::make_unique<DeviceListView>(platform(), notificationManager, startedManager(), model);
}

void UpgradeFixture::runFor(foundation::Duration span) {
  runtime.mainQueue().postAt(runtime.clock().now() + span, [this] { runtime.stopMain(); });
  runtime.runMain();
}

void UpgradeFixture::run(foundation::Task<> task) {
  foundation::spawn(runtime.mainQueue(), thenStop(std::move(task), runtime));
  runtime.runMain();
}

void UpgradeFixture::settle() {
  const auto start = runtime.clock().now();
  do {
    runFor(500ms);
    ASSERT_LT(runtime.clock().now() - start, mostTime) << "the run never ends";
  } while (view->tasksUnderWay() != 0 || model.loadingInProgress.get());
}

void UpgradeFixture::appear() {
  runtime.mainQueue().post([this] { view->appear(); });
  settle();
}

void UpgradeFixture::upgradeFrom(std::size_t row) {
  runtime.mainQueue().post([this, row] {
    view->select(rows().at(row).id);
    ASSERT_FALSE(model.isUploadButtonDisabled.get()) << "row " << row << " can't be upgraded";
    model.loadingInProgress.set(true);
  });
  settle();
}

void UpgradeFixture::confirm(Alert alert) {
  runtime.mainQueue().post([this, alert] { view->confirm(alert); });
  settle();
}

void UpgradeFixture::refresh() {
  runtime.mainQueue().post(
      [] { foundation::NotificationCenter::defaultCenter().post(scanDevicesNotification); });
  settle();
}

std::optional<Alert> UpgradeFixture::alert() const {
  std::optional<Alert> up;
  for (const auto alert : alertsInOrder) {
    if (view->isUp(alert)) {
      EXPECT_FALSE(up) << "two alerts are up";
      up = alert;
    }
  }
  return up;
}

bool UpgradeFixture::flashMatches(std::size_t place) {
  bool matches = false;
  rig.bus.inspect(serialAt(place), [&](const rig::VirtualBoard& board) {
    const auto expected = rig::expectedFlash(app::firmwareAt(place), board.kind());
    matches = expected && std::ranges::equal(*expected, board.flash());
  });
  return matches;
}

bool UpgradeFixture::isReported(std::size_t place) const {
  return std::ranges::any_of(rig.service.requests(), [&](const auto& request) {
    return request.body.starts_with("DEVICE_SERIAL_NUMBER=" + serialAt(place) + "&");
  });
}

bool UpgradeFixture::controlsAreFree() const {
  return model.isUploadButtonDisabled.get() && !model.loadingInProgress.get() &&
         !model.actionButtonsDisabled.get();
}

void UpgradeFixture::list(std::size_t place, const std::function<void(rig::ServedDevice&)>& change) {
  auto devices = app::servedDevices(plan, address);
  change(devices.at(place));
  rig.service.setDevices(devices);
}

void UpgradeFixture::misbehave(const std::string& fault) {
  rig::ServiceFaults faults;
  ASSERT_EQ(rig::addServiceFault(fault, faults), std::nullopt);
  rig.service.setFaults(faults);
}

void UpgradeFixture::spoil(std::size_t place, const std::string& fault) {
  rig::Faults faults;
  ASSERT_EQ(rig::addFault(fault, faults), std::nullopt);
  rig.bus.inspect(serialAt(place), [&faults](rig::VirtualBoard& board) { board.setFaults(faults); });
}

}  // namespace karvex::upgrade
