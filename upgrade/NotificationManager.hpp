#pragma once

#include "foundation/Published.hpp"

namespace karvex::upgrade {

/// The name under which a refresh of the device list is asked for, at the default notification centre.
inline constexpr const char* scanDevicesNotification = "scan_devices_notification";

/// What the views share about notifications. The notification centre carries the message; the flag is only
/// ever set back. Main thread.
class NotificationManager {
 public:
  foundation::Published<bool> notificationReceived{false};
};

}  // namespace karvex::upgrade
