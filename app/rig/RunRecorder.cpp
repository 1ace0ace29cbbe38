#include "app/rig/RunRecorder.hpp"

#include <algorithm>
#include <utility>

#include "app/LoaderHost.hpp"
#include "app/rig/RigSupport.hpp"
#include "rig/ExpectedFlash.hpp"
#include "service/FormText.hpp"

namespace karvex::app {
namespace {

bool isCompletionOf(const rig::ServiceRequest& request, const std::string& serialNumber) {
  return request.path == "/services/uploadComplete.php" &&
         request.body.starts_with(service::formText({{"DEVICE_SERIAL_NUMBER", serialNumber}}) + "&");
}

}  // namespace

RunRecorder::RunRecorder(RigPlatform& rig, ui::ContentView& view, const EquipmentPlan& plan,
                         EndListener endListener)
    : rig_(rig), view_(view), plan_(plan), record_{.start = rig.runtime.clock().now()} {
  for (std::size_t place = 0; place < plan_.boards; ++place) {
    const auto serialNumber = plan_.serialNumberAt(place);
    auto& timeline = timelines_[serialNumber];
    rig_.bus.inspect(serialNumber, [&timeline](rig::VirtualBoard& board) {
      board.setEventListener([&timeline](auto at, const std::string& event) { timeline.add(at, event); });
    });
  }
  lookAtControls();
  subscriptions_ = ui::observe(view, [this] { look(); });
  subscriptions_.push_back(view.deviceListView.deviceManager.managedDevices.observe(
      [this](const auto& devices) { lookAtRows(devices); }));
  beforeProcessEnd([this, endListener = std::move(endListener)] { endListener(record()); });
}

RunRecorder::~RunRecorder() {
  beforeProcessEnd(nullptr);
  for (const auto& [serialNumber, timeline] : timelines_) {
    rig_.bus.inspect(serialNumber, [](rig::VirtualBoard& board) { board.setEventListener(nullptr); });
  }
}

void RunRecorder::look() {
  const auto now = rig_.runtime.clock().now();
  const auto alert = ui::alertOf(view_.deviceListView);
  const auto title = alert ? alert->title : std::string();
  if (alert && title != lastDialog_) {
    record_.dialogs.push_back({now, alert->title, alert->message});
  }
  lastDialog_ = title;
  lookAtControls();
}

/// Of a long list, most rows are at each change as they were.
void RunRecorder::lookAtRows(const std::vector<records::BootableDevice>& devices) {
  rows_.resize(devices.size());
  for (std::size_t place = 0; place < devices.size(); ++place) {
    const auto& device = devices[place];
    const std::pair row(device.id, device.status);
    if (std::exchange(rows_[place], row) == row) {
      continue;
    }
    auto& statuses = record_.statuses[device.portSerialNumber];
    if (statuses.empty() || statuses.back().status != device.status) {
      statuses.push_back({rig_.runtime.clock().now(), device.status});
    }
  }
}

void RunRecorder::lookAtControls() {
  const auto& model = view_.loadingViewModel;
  const RunRecord::ControlsAt controls{.at = rig_.runtime.clock().now(),
                                       .uploadDisabled = model.isUploadButtonDisabled.get(),
                                       .loading = model.loadingInProgress.get(),
                                       .actionsDisabled = model.actionButtonsDisabled.get()};
  const auto isSame = [&controls](const RunRecord::ControlsAt& other) {
    return controls.uploadDisabled == other.uploadDisabled && controls.loading == other.loading &&
           controls.actionsDisabled == other.actionsDisabled;
  };
  if (record_.controls.empty() || !isSame(record_.controls.back())) {
    record_.controls.push_back(controls);
  }
}

RunRecord::Board RunRecorder::boardAt(std::size_t place) const {
  RunRecord::Board result{.serialNumber = plan_.serialNumberAt(place)};
  const auto now = rig_.runtime.clock().now();
  rig_.bus.inspect(result.serialNumber, [&](const rig::VirtualBoard& board) {
    const auto expected = rig::expectedFlash(plan_.firmwareFileAt(place), board.kind());
    result.mcu = board.kind().mcu;
    result.isBack = board.isOnBus() || (board.changesAt() && *board.changesAt() - now <= mostTimeToReturn);
    result.state = nameOf(board.state());
    result.reports = board.blocksTaken();
    result.bootReport = board.hasBooted();
    result.flashMatches = expected && std::ranges::equal(*expected, board.flash());
  });
  result.timeline = timelines_.at(result.serialNumber).entries();
  return result;
}

RunRecord RunRecorder::record() const {
  auto record = record_;
  record.requests = rig_.service.requests();
  for (std::size_t place = 0; place < plan_.boards; ++place) {
    auto board = boardAt(place);
    board.isReported = std::ranges::any_of(record.requests, [&board](const auto& request) {
      return isCompletionOf(request, board.serialNumber);
    });
    record.boards.push_back(std::move(board));
  }
  return record;
}

}  // namespace karvex::app
