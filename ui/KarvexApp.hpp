#pragma once

#include <memory>
#include <string>

#include "MIDIKitIO/manager/ObservableMIDIManager.hpp"
#include "upgrade/NotificationManager.hpp"
#include "upgrade/Platform.hpp"

namespace karvex::ui {

/// The application as a value: what every view of it shares. Main thread.
class KarvexApp {
 public:
  /// The platform must outlive the application. The MIDI manager is not started yet: that is the window's
  /// part.
  explicit KarvexApp(const upgrade::Platform& platform);

  upgrade::NotificationManager notificationManager;
  const std::shared_ptr<midikit::io::ObservableMIDIManager> midiManager;

  /// A URL that the desktop handed over. It is printed, and changes nothing.
  static void openUrl(const std::string& url);
};

}  // namespace karvex::ui
