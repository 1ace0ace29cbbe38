#include "ui/EmptyTable.hpp"

#include <fmt/format.h>

namespace karvex::ui {
namespace {

std::string nothingAttached(const EmptyTable& table) {
  if (table.isInProgrammingMode) {
    return "A board is in programming mode already. Refresh the list to bring it back.";
  }
  if (table.seenOnTheBus == 0) {
    return "No board was seen on the USB bus. Connect your equipment and power it up, then refresh the list.";
  }
  return fmt::format("{} {} seen on the USB bus, but the service has no firmware for {}. Notify your dealer.",
                     table.seenOnTheBus, table.seenOnTheBus == 1 ? "board was" : "boards were",
                     table.seenOnTheBus == 1 ? "it" : "any of them");
}

}  // namespace

std::string textOf(const EmptyTable& table) {
  switch (table.request.state) {
    case upgrade::ListRequest::State::notMade:
      return "";
    case upgrade::ListRequest::State::underWay:
      return "Asking the service for its list of devices...";
    case upgrade::ListRequest::State::unreachable:
      return fmt::format(
          "The service could not be reached: {}. Check your internet connection, then refresh the list.",
          table.request.reason);
    case upgrade::ListRequest::State::unreadable:
      return "The service answered, but not with a list of devices. Refresh the list; if that doesn't help, "
             "notify your dealer.";
    case upgrade::ListRequest::State::answered:
      break;
  }
  return table.listed == 0 && !table.isInProgrammingMode ? "The service lists no device."
                                                         : nothingAttached(table);
}

}  // namespace karvex::ui
