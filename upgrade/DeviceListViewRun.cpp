// The upgrade run: from the click to the end of the last load.

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <utility>

#include "device/PortName.hpp"
#include "foundation/Log.hpp"
#include "foundation/net/Url.hpp"
#include "loader/halfkay.hpp"
#include "loader/load.hpp"
#include "loader/load_status.hpp"
#include "loader/programming_worker.hpp"
#include "upgrade/DeviceListView.hpp"

namespace karvex::upgrade {
namespace {

using foundation::Task;
using foundation::Uuid;
using std::chrono::milliseconds;

/// Between the announcement of a download and the download: no tick comes in, and the log reads in order.
constexpr milliseconds pauseBeforeDownload{100};
/// Between the request for the bootloader and the search for the board.
constexpr milliseconds pauseBehindRequest{50};

/// What downloadFirmware gives for a file that can't be had; never the text of a file URL.
constexpr const char* downloadFailed = "error";

template <typename... Args>
void log(fmt::format_string<Args...> format, Args&&... args) {
  foundation::log::system(fmt::format(format, std::forward<Args>(args)...));
}

}  // namespace

/// Makes the next tick take the status over, also if it is that of before.
void DeviceListView::beginStatus(std::uint32_t status) {
  statusManager.statusChanged.set(true);
  loader::set_load_status(status);
}

Task<> DeviceListView::uploadFirstDevice(records::BootableDevice device) {
  beginStatus(loader::LOAD_STATUS_IMPORT_FILE);
  platform_.runtime.clock().sleepFor(pauseBeforeDownload);
  log("> KARVEX : Calling File loader...");
  const auto fileUrl = co_await downloadFirmware(device);
  log("> KARVEX : File loader terminated");
  if (fileUrl == downloadFailed) {
    log("> KARVEX : File loader error Handling => @Todo");
    loadingViewModel.resetUploadControls();
    startRefresh();
    co_return;
  }
  beginStatus(loader::LOAD_STATUS_PROGRAMMING);
  if (doUpload(fileUrl, device)) {
    log("> KARVEX : doUpload terminated successfully");
    co_return;
  }
  log("> KARVEX : doUpload terminated with errors");
  loadingViewModel.resetUploadControls();
  selectedDeviceId.set(std::nullopt);
}

Task<> DeviceListView::uploadNextDevice(records::BootableDevice device) {
  log("> KARVEX : Getting File for next device");
  beginStatus(loader::LOAD_STATUS_IMPORT_FILE);
  platform_.runtime.clock().sleepFor(pauseBeforeDownload);
  const auto fileUrl = co_await downloadFirmware(device);
  if (fileUrl == downloadFailed) {
    log("> KARVEX : @Todo : Error loading Hex file");
    co_return;
  }
  beginStatus(loader::LOAD_STATUS_PROGRAMMING);
  log("> KARVEX : doUpload Next Device");
  if (doUpload(fileUrl, device)) {
    log("> KARVEX : doUpload terminated with no errors detected");
    co_return;
  }
  log("> KARVEX : DoUpload terminated with error");
  loadingViewModel.resetUploadControls();
  startRefresh();
}

/// Gives the text of the file's URL, or `downloadFailed`.
Task<std::string> DeviceListView::downloadFirmware(records::BootableDevice device) {
  serialNumberInWork_ = device.portSerialNumber;
  const auto url = device.firmwareServerURL + device.firmwareDir + device.firmwareFile;
  if (!foundation::isUrl(url)) {
    foundation::log::debug("Invalid URL : ." + url);
    tell(SilentStop::badUrl);
    loadingViewModel.resetUploadControls();
    co_return downloadFailed;
  }
  std::string path;
  std::string failure;
  try {
    path = (co_await platform_.urlSession.download(url)).string();
  } catch (const foundation::UrlError& error) {
    failure = error.what();
  }
  co_await foundation::resumeOn(platform_.runtime.mainQueue());
  if (path.empty()) {
    log("> KARVEX : Download Failed:  {}", failure);
    downloadErrorShowModal.toggle();
    downloadErrorText.set(failure);
    loadingViewModel.resetUploadControls();
    co_return downloadFailed;
  }
  log("> KARVEX : URL Temp = {}", path);
  log("> KARVEX : File Download complete");
  // The loader takes what stands behind "file://" as the path, escapes and all, so none are made.
  co_return "file://" + path;
}

void DeviceListView::showStatus(std::uint32_t status) {
  if (const auto selected = selectedDeviceId.get()) {
    deviceManager.updateStatus(*selected, status);
  }
}

/// Blocks the main queue until the worker has been started. True if it was.
bool DeviceListView::doUpload(const std::string& fileUrl, const records::BootableDevice& device) {
  loader::reset_load_progress();  // What is shown from here on is this device's.
  showStatus(loader::LOAD_STATUS_CHECKING_DEVICE);
  log("> KARVEX : Starting Upload procedure...");
  loader::reset_halfkay_device();
  const auto port = device::portNameFor(device.portSerialNumber);
  if (!serialPortMgr.checkPortAvailability(device, port)) {
    portBusyError.toggle();
    return false;
  }
  showStatus(loader::LOAD_STATUS_PROGRAMMING);
  if (!serialPortMgr.requestHalfkayMode(port)) {
    halfkayModeFailed.toggle();
    return false;
  }
  platform_.runtime.clock().sleepFor(pauseBehindRequest);
  const std::string answer = loader::setParameters(fileUrl.c_str(), device.mcu.c_str());
  if (answer == loader::load_started) {
    return true;
  }
  uploadErrorText.set(answer);
  if (loader::get_load_status() != loader::LOAD_STATUS_ERROR_PERMISSION) {
    uploadErrorShowModal.set(true);
  }
  log("> KARVEX : Upload failed => reason {}", answer);
  return false;
}

void DeviceListView::timerTick() {
  const auto [changed, status] = statusManager.pollStatus();
  if (!changed) {
    return;
  }
  if (statusManager.statusState.get() == status) {
    statusManager.statusChanged.set(false);
  }
  log("> KARVEX : Acknowledged Status value = {}", status);
  if (status == loader::LOAD_STATUS_ERROR_PERMISSION) {
    tell(SilentStop::permissionDenied);
    return endRun();
  }
  const auto selected = selectedDeviceId.get();
  if (!selected) {
    return;
  }
  deviceManager.updateStatus(*selected, status);
  if (status == loader::LOAD_STATUS_SUCCESS) {
    return loadEnded(*selected);
  }
  const bool isBadFile = status == loader::LOAD_STATUS_ERROR_FILE_FORMAT;
  const bool hasFailed = isBadFile || status == loader::LOAD_STATUS_ERROR_PROGRAM;
  if (hasFailed && loadingViewModel.loadingInProgress.get()) {
    stopRun(isBadFile ? SilentStop::badFile : SilentStop::programError,
            fmt::format("status {}, {}", status, loader::load_status_text(status)));
  }
}

void DeviceListView::loadEnded(const Uuid& id) {
  reportsUnderWay.update([](int& count) { ++count; });
  start(reportCompletion(id));
  const auto devices = deviceManager.managedDevices.get();
  const auto finished = std::ranges::find(devices, id, &records::BootableDevice::id);
  if (finished == devices.end() || std::next(finished) == devices.end()) {
    endRun();
    procedureComplete.toggle();
    log("> KARVEX : End of loading Sequence");
    return;
  }
  const auto next = deviceManager.nextDevice(id);
  log("> KARVEX : Sleeping for {} milliseconds", finished->setupDelay);
  platform_.runtime.clock().sleepFor(milliseconds{finished->setupDelay});
  log("> KARVEX : Check if next device is alive...");
  goOnWith(next);
}

Task<> DeviceListView::reportCompletion(Uuid id) {
  co_await deviceManager.sendUploadComplete(id);
  reportsUnderWay.update([](int& count) { --count; });
}

void DeviceListView::goOnWith(const records::BootableDevice& next) {
  if (deviceManager.deviceExplorer.isSerialInterfacePresent(next.portSerialNumber)) {
    autoSelect = true;
    selectedDeviceId.set(next.id);
    start(uploadNextDevice(next));
    return;
  }
  selectedDeviceId.set(next.id);
  serialNumberInWork_ = next.portSerialNumber;
  stopRun(SilentStop::deviceMissing, fmt::format("device #{} is not attached", next.portSerialNumber));
}

/// The controls are free again, and the tick writes no more into the row.
void DeviceListView::endRun() {
  loadingViewModel.resetUploadControls();
  selectedDeviceId.set(std::nullopt);
}

void DeviceListView::tell(SilentStop stop) {
  Refusal refusal;
  if (stop == SilentStop::permissionDenied) {
    refusal = {.node = loader::refused_halfkay_node(), .rules = platform_.deviceRules()};
  }
  stopNotice.set(noticeOf(stop, serialNumberInWork_, refusal));
}

/// A failure that no dialog tells of: the log and a notice say why the run is over.
void DeviceListView::stopRun(SilentStop stop, const std::string& reason) {
  tell(stop);
  log("> KARVEX : Upgrade stopped => reason {}", reason);
  endRun();
}

}  // namespace karvex::upgrade
