#pragma once

#include <memory>
#include <string>

#include "MIDIKitIO/platform/MIDIService.hpp"
#include "device/DeviceExplorer.hpp"
#include "device/platform/DeviceRules.hpp"
#include "device/platform/SerialInterfaces.hpp"
#include "device/platform/TerminalNode.hpp"
#include "device/platform/UsbBus.hpp"
#include "foundation/net/UrlSession.hpp"
#include "foundation/run/Runtime.hpp"
#include "service/ServiceAddress.hpp"

namespace karvex::upgrade {

/// Everything outside that an upgrade works with. What is referred to must outlive whoever is given it.
struct Platform {
  foundation::Runtime& runtime;
  foundation::UrlSession& urlSession;
  device::UsbBus& usbBus;
  device::SerialInterfaces& serialInterfaces;
  device::TerminalNodes& terminalNodes;
  std::shared_ptr<midikit::io::MIDIService> midiService;
  service::ServiceAddress serviceAddress;
  /// Whether the rules that open the boards to their user are there; asked when a board may not be opened.
  device::RulesState (*deviceRules)() = [] { return device::RulesState::unknown; };

  device::ExplorerPlatform forExplorer() const {
    return {runtime, usbBus, serialInterfaces, urlSession, serviceAddress.deviceExplorer};
  }
};

}  // namespace karvex::upgrade
