#include "upgrade/Alert.hpp"

#include <cstdlib>

namespace karvex::upgrade {
namespace {

constexpr std::string_view halfkayModeDetectedMessage =
    "One of the devices of the equipment is already in programming mode.\n"
    "Click on OK to restore initial state. If the problem persists \n"
    "power-down your device, then click on OK, then power-up your device.\n"
    "Quit and re-launch KARVEX application. Then restart upload procedure.";

constexpr std::string_view procedureCompleteMessage =
    "All devices have been upgraded.\n"
    "You can now close this application.";

constexpr std::string_view uploadErrorHints =
    "\nRefresh list then restart upgrade procedure.\n"
    "If the problem persists Power-Down then Power-Up your equipment\n"
    "and restart upgrade procedure.";

constexpr std::string_view portBusyMessage =
    "One or more application(s) currently active on your system prevents\n"
    "exclusive access to the serial port required for upgrading the device firmware.\n"
    "Please shutdown all applications (e.g. serial monitor, midi monitor,\n"
    "DAW monitoring tools, etc.) that may interfer with the device before continuing.\n"
    "Then restart upgrade procedure.";

constexpr std::string_view downloadErrorMessage =
    "            An error occurred during the attempt\n"
    "            to download one firmware file.\n"
    "            \n"
    "            Check your internet connection and retry the upload procedure.";

constexpr std::string_view halfkayModeFailedMessage =
    "An error occurred during an attempt to put the device in programming mode.\n"
    "Try to switch power-off, then power-on and retry procedure.\n"
    "If the problem persists notify your dealer with the following info: ";

}  // namespace

std::string_view titleOf(Alert alert) {
  switch (alert) {
    case Alert::halfkayModeDetected:
      return "Device already in programming mode";
    case Alert::procedureComplete:
      return "Upgrade Procedure Complete";
    case Alert::uploadError:
      return "An error occurred during upload";
    case Alert::portBusy:
      return "Device Port currently in use! ";
    case Alert::downloadError:
      return "Could not download Firmware file";
    case Alert::halfkayModeFailed:
      return "Could not switch device to programming mode";
  }
  std::abort();
}

std::string messageOf(Alert alert, std::string_view detail) {
  switch (alert) {
    case Alert::halfkayModeDetected:
      return std::string(halfkayModeDetectedMessage);
    case Alert::procedureComplete:
      return std::string(procedureCompleteMessage);
    case Alert::uploadError:
      return std::string(detail).append(uploadErrorHints);
    case Alert::portBusy:
      return std::string(portBusyMessage);
    case Alert::downloadError:
      return std::string(downloadErrorMessage);
    case Alert::halfkayModeFailed:
      return std::string(halfkayModeFailedMessage).append(detail);
  }
  std::abort();
}

}  // namespace karvex::upgrade
