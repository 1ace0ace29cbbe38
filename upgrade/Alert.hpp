#pragma once

#include <array>
#include <string>
#include <string_view>

namespace karvex::upgrade {

/// What the user is told in a dialog with a title, a message and the single button "OK". In the order in
/// which they are shown when more than one is up.
enum class Alert {
  halfkayModeDetected,
  procedureComplete,
  uploadError,
  portBusy,
  downloadError,
  halfkayModeFailed,
};

inline constexpr std::array alertsInOrder{Alert::halfkayModeDetected, Alert::procedureComplete,
                                          Alert::uploadError,         Alert::portBusy,
                                          Alert::downloadError,       Alert::halfkayModeFailed};

std::string_view titleOf(Alert alert);

/// The message, of several lines. `detail` is what failed: the loader's answer for uploadError, the serial
/// port's error text for halfkayModeFailed; the others have no place for one.
std::string messageOf(Alert alert, std::string_view detail);

}  // namespace karvex::upgrade
