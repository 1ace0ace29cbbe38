#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "MIDIKitCore/MIDIIOError.hpp"
#include "foundation/run/VirtualRuntime.hpp"
#include "rig/midi/VirtualMidiService.hpp"

namespace midikit::io {

/// What the call throws.
inline std::optional<core::MIDIIOError> errorOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const core::MIDIIOError& error) {
    return error;
  }
  return std::nullopt;
}

/// The names of objects, in their order.
template <class Object>
std::vector<std::string> namesOf(const std::vector<Object>& objects) {
  std::vector<std::string> names;
  for (const auto& object : objects) {
    names.push_back(object.name);
  }
  return names;
}

/// A service on virtual time, on a platform that has everything, with nothing attached.
class MIDITestFixture : public testing::Test {
 protected:
  /// Lets all that waits on the service's threads and the queues run, but for the main queue.
  void settle() { runtime.clock().sleepFor(std::chrono::milliseconds(1)); }

  /// The same with the main queue.
  void settleMain() {
    runtime.globalQueue().postAt(runtime.clock().now() + std::chrono::milliseconds(1),
                                 [this] { runtime.stopMain(); });
    runtime.runMain();
  }

  /// A service for a platform of that version.
  std::shared_ptr<karvex::rig::VirtualMidiService> serviceOf(PlatformVersion version) {
    return std::make_shared<karvex::rig::VirtualMidiService>(runtime, version);
  }

  karvex::foundation::VirtualRuntime runtime;
  std::shared_ptr<karvex::rig::VirtualMidiService> service = serviceOf({13, 0});
};

}  // namespace midikit::io
