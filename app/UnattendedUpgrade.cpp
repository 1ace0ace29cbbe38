#include "app/UnattendedUpgrade.hpp"

#include <fmt/format.h>

#include <utility>

#include "loader/load_status.hpp"
#include "ui/LineText.hpp"
#include "ui/TerminationSignals.hpp"
#include "ui/console/StyledText.hpp"
#include "upgrade/LoadProgress.hpp"

namespace karvex::app {
namespace {

/// Why a device was not upgraded. `status` is the last one in its row. A load that may not open the board
/// ends the run without a word in the row: then the loader has it.
std::string_view reasonFor(std::uint32_t status) {
  if (status == loader::LOAD_STATUS_IDLE) {
    return "not begun";
  }
  const auto last = loader::get_load_status();
  const bool isDenied = last == loader::LOAD_STATUS_ERROR_PERMISSION;
  const auto shown = isDenied ? last : status;
  return shown > loader::LOAD_STATUS_SUCCESS ? upgrade::statusText(shown) : "";
}

std::string sentenceOf(const records::BootableDevice& device, std::uint32_t status) {
  const auto name = ui::lineOf(fmt::format("#{} {} - {}", device.portSerialNumber, device.sequenceNumber,
                                           device.deviceName.value_or("")));
  if (status == loader::LOAD_STATUS_SUCCESS) {
    return fmt::format("{}: upgraded.", name);
  }
  const auto reason = reasonFor(status);
  return fmt::format("{}: NOT UPGRADED{}{}.", name, reason.empty() ? "" : ": ", reason);
}

}  // namespace

UnattendedUpgrade::UnattendedUpgrade(ApplicationCore& core, ScriptedUser::Plan plan, Write write)
    : core_(core),
      plan_(plan),
      write_(std::move(write)),
      front_(core.view(), write_),
      subscription_(core.view().deviceListView.deviceManager.managedDevices.observe(
          [this](const auto& devices) { note(devices); })) {}

/// A refresh sets every row's status back to the first one; what had become of the device stays.
void UnattendedUpgrade::note(const std::vector<records::BootableDevice>& devices) {
  for (const auto& device : devices) {
    if (device.status != loader::LOAD_STATUS_IDLE) {
      statuses_[device.portSerialNumber] = device.status;
    }
  }
}

ExitStatus UnattendedUpgrade::run() {
  auto& runtime = core_.runtime();
  const auto stop = [&runtime] { runtime.stopMain(); };
  const ScriptedUser user(runtime, core_.view(), plan_, stop);
  const ui::TerminationSignals terminationSignals(
      [&] { runtime.mainQueue().post([&] { front_.quitWhenIdle(stop); }); });
  core_.actions().appear();
  runtime.runMain();
  return summarise(user);
}

ExitStatus UnattendedUpgrade::summarise(const ScriptedUser& user) {
  if (user.hasGivenUp()) {
    write_("The alert comes back whatever is answered.");
  }
  if (user.wanted().empty()) {
    write_(plan_.firstRow == 0 ? "There is no device to upgrade."
                               : fmt::format("There is no row {}.", plan_.firstRow + 1));
    return exitLoadFailed;
  }
  std::size_t upgraded = 0;
  for (const auto& device : user.wanted()) {
    const auto status = statuses_[device.portSerialNumber];
    write_(sentenceOf(device, status));
    upgraded += status == loader::LOAD_STATUS_SUCCESS ? 1U : 0U;
  }
  write_(fmt::format("{} of {} devices upgraded.", upgraded, user.wanted().size()));
  return upgraded == user.wanted().size() && !user.hasGivenUp() ? exitLoaded : exitLoadFailed;
}

}  // namespace karvex::app
