#pragma once

#include "app/ApplicationCore.hpp"
#include "app/FailureLog.hpp"
#include "app/FailureRecorder.hpp"
#include "device/platform/linux/SysfsSerialInterfaces.hpp"
#include "device/platform/linux/TermiosTerminalNodes.hpp"
#include "device/platform/linux/UdevUsbBus.hpp"
#include "foundation/net/UrlSession.hpp"
#include "foundation/run/SystemRuntime.hpp"
#include "ui/KarvexApp.hpp"
#include "upgrade/Platform.hpp"

namespace karvex::app {

/// The application's objects on real equipment. One for each process: it installs the loader's host and its
/// HID devices.
class KarvexCore final : public ApplicationCore {
 public:
  KarvexCore();
  /// What runs on the global queue uses the others' state, so it ends first.
  ~KarvexCore() override { runtime_.finish(); }
  KarvexCore(const KarvexCore&) = delete;
  KarvexCore& operator=(const KarvexCore&) = delete;

  foundation::Runtime& runtime() override { return runtime_; }
  ui::ContentView& view() override { return view_; }
  ui::Actions& actions() override { return actions_; }

 private:
  foundation::SystemRuntime runtime_;
  foundation::UrlSession urlSession_;
  device::UdevUsbBus usbBus_;
  device::SysfsSerialInterfaces serialInterfaces_;
  device::TermiosTerminalNodes terminalNodes_;
  upgrade::Platform platform_;
  ui::KarvexApp app_;
  ui::ContentView view_;
  ui::Actions actions_;
  FailureLog failureLog_;
  FailureRecorder failureRecorder_;
};

}  // namespace karvex::app
