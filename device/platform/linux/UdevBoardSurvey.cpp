#include "device/platform/linux/UdevBoardSurvey.hpp"

#include <fmt/format.h>
#include <grp.h>
#include <libudev.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <string_view>
#include <system_error>

#include "device/DeviceExplorer.hpp"
#include "device/platform/linux/TerminalHolders.hpp"
#include "device/platform/linux/UdevUsbDevice.hpp"
#include "device/platform/linux/UdevWalk.hpp"

namespace karvex::device {
namespace {

using Boards = std::map<BusPosition, SurveyedBoard>;

/// Absent where udevd has not seen the device, and so nobody knows.
std::optional<bool> hasProperty(udev_device& device, const char* name) {
  if (udev_device_get_is_initialized(&device) == 0) {
    return std::nullopt;
  }
  const char* const value = udev_device_get_property_value(&device, name);
  return value != nullptr && std::string_view(value) == "1";
}

SurveyedBoard boardOf(udev_device& device) {
  return {.place = udev_device_get_sysname(&device),
          .device = usbDeviceOf(device),
          .nodes = {},
          .isKeptFromModemManagers = hasProperty(device, "ID_MM_DEVICE_IGNORE"),
          .isKeptFromMtpProbes = hasProperty(device, "MTP_NO_PROBE")};
}

/// Our rules leave sound to those of the system.
std::optional<bool> isTagged(udev_device& node) {
  const bool isSound = udev_device_get_subsystem(&node) == std::string_view("sound");
  return isSound || udev_device_get_is_initialized(&node) == 0
             ? std::nullopt
             : std::optional(udev_device_has_tag(&node, "uaccess") == 1);
}

/// Of a sound card, the node that carries MIDI; the boards' others are for audio.
bool isOfInterest(std::string_view node) {
  return !node.starts_with("/dev/snd/") || node.starts_with("/dev/snd/midi");
}

void addNode(Boards& boards, udev_device& node) {
  udev_device* const parent = udev_device_get_parent_with_subsystem_devtype(&node, "usb", "usb_device");
  const char* const path = udev_device_get_devnode(&node);
  if (parent == nullptr || path == nullptr || !isOfInterest(path)) {
    return;
  }
  if (const auto board = boards.find(positionOf(*parent)); board != boards.end()) {
    board->second.nodes.push_back(
        {.path = path, .obstacle = obstacleOf(path), .holders = holdersOf(path), .isTagged = isTagged(node)});
  }
}

// NOLINTBEGIN(concurrency-mt-unsafe): the header says so.
std::string ownerOf(const struct stat& node) {
  const passwd* const user = getpwuid(node.st_uid);
  const group* const owners = getgrgid(node.st_gid);
  return fmt::format("{}:{}, mode {:o}", user != nullptr ? user->pw_name : std::to_string(node.st_uid),
                     owners != nullptr ? owners->gr_name : std::to_string(node.st_gid), node.st_mode & 0777U);
}
// NOLINTEND(concurrency-mt-unsafe)

}  // namespace

std::string obstacleOf(const std::string& node) {
  if (::access(node.c_str(), R_OK | W_OK) == 0) {
    return {};
  }
  const auto reason = std::generic_category().message(errno);
  struct stat status{};
  return ::stat(node.c_str(), &status) == 0 ? fmt::format("{}: it belongs to {}", reason, ownerOf(status))
                                            : reason;
}

std::vector<SurveyedBoard> UdevBoardSurvey::boards() {
  Boards found;
  walkUdev("usb", [&found](udev_device& device) {
    if (isUsbDevice(device) && usbDeviceOf(device).idVendor == DeviceExplorer::PJRC_VENDOR_ID) {
      found.emplace(positionOf(device), boardOf(device));
    }
    return true;
  });
  for (const char* subsystem : {"tty", "hidraw", "sound"}) {
    walkUdev(subsystem, [&found](udev_device& node) {
      addNode(found, node);
      return true;
    });
  }
  std::vector<SurveyedBoard> boards;
  for (auto& [position, board] : found) {
    boards.push_back(std::move(board));
  }
  return boards;
}

}  // namespace karvex::device
