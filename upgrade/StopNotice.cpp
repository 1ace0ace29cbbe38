#include "upgrade/StopNotice.hpp"

#include <fmt/format.h>

namespace karvex::upgrade {
namespace {

/// Rules that were put in place since the board came don't count for it.
std::string adviceOn(device::RulesState rules) {
  switch (rules) {
    case device::RulesState::missing:
      return fmt::format("The udev rules are missing ({}): install them, then plug the device in again.",
                         device::rulesFileName);
    case device::RulesState::there:
      return "Plug the device in again; if that doesn't help, karvex-console --diagnose says more.";
    case device::RulesState::unknown:
      break;
  }
  return fmt::format(
      "Plug the device in again; if that doesn't help, the udev rules are missing ({}): karvex-console "
      "--diagnose says more.",
      device::rulesFileName);
}

std::string sentencesOn(const Refusal& refusal) {
  return fmt::format("{} may not be opened. {}", refusal.node.empty() ? "it" : refusal.node,
                     adviceOn(refusal.rules));
}

std::string sentencesOf(SilentStop stop, const Refusal& refusal) {
  switch (stop) {
    case SilentStop::badUrl:
      return "the address of its firmware file is no URL. The device is unchanged; notify your dealer.";
    case SilentStop::badFile:
      return "its firmware file is damaged. Refresh the list and start again at this device; if it stops "
             "again, notify your dealer.";
    case SilentStop::programError:
      return "it took no more of its firmware. Power it down and up, refresh the list, and start again at "
             "this device.";
    case SilentStop::permissionDenied:
      return sentencesOn(refusal);
    case SilentStop::deviceMissing:
      return "it is not attached. Connect it, refresh the list, and start again at this device.";
  }
  return "";
}

}  // namespace

std::string noticeOf(SilentStop stop, std::string_view serialNumber, const Refusal& refusal) {
  const auto sentences = sentencesOf(stop, refusal);
  return serialNumber.empty() ? fmt::format("A device can't be upgraded: {}", sentences)
                              : fmt::format("The upgrade stopped at device #{}: {}", serialNumber, sentences);
}

}  // namespace karvex::upgrade
