#pragma once

#include <memory>
#include <optional>

#include "app/rig/Equipment.hpp"
#include "foundation/net/UrlSession.hpp"
#include "foundation/run/Runtime.hpp"
#include "rig/VirtualBus.hpp"
#include "rig/VirtualHid.hpp"
#include "rig/VirtualTerminals.hpp"
#include "rig/midi/BoardMidiDevices.hpp"
#include "rig/midi/VirtualMidiService.hpp"
#include "rig/service/EmbeddedService.hpp"
#include "upgrade/Platform.hpp"

namespace karvex::app {

/// Everything outside, simulated: a bus of boards with their serial ports, HID and MIDI devices, and a
/// firmware service that lists them.
class RigPlatform {
 public:
  /// Installs the rig's HID devices into the loader. The runtime must outlive the platform. Throws
  /// std::runtime_error if the service can't be started.
  RigPlatform(foundation::Runtime& runtime, const EquipmentPlan& plan, rig::ServiceFaults faults);

  upgrade::Platform platform();

  foundation::Runtime& runtime;
  rig::VirtualBus bus;
  rig::VirtualTerminals terminals;
  rig::VirtualHid hid;
  std::shared_ptr<rig::VirtualMidiService> midiService;
  std::optional<rig::BoardMidiDevices>
      midiDevices;  ///< of the boards that are plugged in at the start, and later
  rig::EmbeddedService service;
  foundation::UrlSession urlSession;
};

}  // namespace karvex::app
