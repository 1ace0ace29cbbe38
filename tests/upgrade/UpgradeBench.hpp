#pragma once

#include <memory>
#include <string>
#include <vector>

#include "foundation/UrlSession.hpp"
#include "foundation/VirtualRuntime.hpp"
#include "rig/VirtualBus.hpp"
#include "rig/VirtualTerminals.hpp"
#include "rig/midi/VirtualMidiService.hpp"
#include "rig/service/EmbeddedService.hpp"
#include "upgrade/Platform.hpp"

namespace karvex::upgrade {

/// The upgrade's classes on a virtual bus, a virtual clock and an embedded service, with the three log
/// channels caught.
class UpgradeBench {
 public:
  UpgradeBench();
  ~UpgradeBench();
  UpgradeBench(const UpgradeBench&) = delete;
  UpgradeBench& operator=(const UpgradeBench&) = delete;

  Platform platform();

  /// Has the service misbehave in this way from now on, and in no other.
  void misbehave(const std::string& fault);

  /// Runs the main queue for a span of virtual time.
  void runFor(foundation::Duration span);
  /// Runs a task that is started on the main queue to its end.
  void run(foundation::Task<> task);

  foundation::VirtualRuntime runtime;
  rig::VirtualBus bus{runtime.clock()};
  rig::VirtualTerminals terminals{bus};
  std::shared_ptr<rig::VirtualMidiService> midiService = std::make_shared<rig::VirtualMidiService>(runtime);
  rig::EmbeddedService service;
  foundation::UrlSession urlSession;
  std::string address;

  std::vector<std::string> logged;
  std::string printed;
  std::vector<std::string> debugged;
};

}  // namespace karvex::upgrade
