#include "upgrade/StopNotice.hpp"

#include <fmt/format.h>

namespace karvex::upgrade {
namespace {

std::string_view sentencesOf(SilentStop stop) {
  switch (stop) {
    case SilentStop::badUrl:
      return "the address of its firmware file is no URL. The device is unchanged; notify your dealer.";
    case SilentStop::badFile:
      return "its firmware file is damaged. Refresh the list and start again at this device; if it stops "
             "again, "
             "notify your dealer.";
    case SilentStop::programError:
      return "it took no more of its firmware. Power it down and up, refresh the list, and start again at "
             "this "
             "device.";
    case SilentStop::permissionDenied:
      return "it may not be opened. Plug it in again; if that doesn't help, the udev rules are missing "
             "(60-karvex.rules): karvex-console --diagnose says more.";
    case SilentStop::deviceMissing:
      return "it is not attached. Connect it, refresh the list, and start again at this device.";
  }
  return "";
}

}  // namespace

std::string noticeOf(SilentStop stop, std::string_view serialNumber) {
  return serialNumber.empty()
             ? fmt::format("A device can't be upgraded: {}", sentencesOf(stop))
             : fmt::format("The upgrade stopped at device #{}: {}", serialNumber, sentencesOf(stop));
}

}  // namespace karvex::upgrade
