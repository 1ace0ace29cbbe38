#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "MIDIKitIO/manager/MIDIManaged.hpp"
#include "MIDIKitInternals/ThreadSafeAccess.hpp"

namespace midikit::io::internal {

/// What MIDIInput and MIDIOutput have alike: an endpoint of the program's own, which others on the system can
/// reach. The destructor of what derives from it disposes it.
class MIDIManagedEndpoint : public MIDIManaged {
 public:
  std::string name() const { return state_.value().name; }

  /// Renames the endpoint, also on the platform if it is there. A failure of the platform's is dropped.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it allocates and asks the service.
  void setName(std::string name);

  /// The unique ID in use; none before the endpoint has been made, unless one was kept from an earlier run.
  std::optional<std::int32_t> uniqueID() const {
    return state_.modify([](const State& state) { return state.uniqueID; });
  }

  /// Hides the endpoint from other programs, or shows it.
  /// @throws MIDIIOError `osStatus`, also if the endpoint isn't on the platform
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it asks the service.
  void setPrivate(bool isPrivate);

  void dispose() noexcept override;

  /// Makes the endpoint on the platform, with the kept unique ID unless another endpoint has that one. For
  /// the manager.
  /// @throws MIDIIOError
  ///
  /// Thread-safe: on eventQueue alone.
  /// Realtime-safe: no, it asks the service.
  void create(const MIDIManager& manager);

 protected:
  struct Description {
    std::string name;
    std::optional<std::int32_t> uniqueID;
  };
  MIDIManagedEndpoint(const std::shared_ptr<MIDIManager>& manager, Description description);

  /// None if the endpoint isn't on the platform.
  std::optional<MIDIObjectRef> reference() const {
    return state_.modify([](const State& state) { return state.reference; });
  }

  /// `CLASS(name: "a name", uniqueID: 1)`
  std::string descriptionAs(const char* className) const;

  /// @name What the two have of their own
  /// @{
  virtual bool isTaken(std::int32_t uniqueID) const = 0;
  virtual OSStatus makeEndpoint(const MIDIManager& manager, MIDIObjectRef& outEndpoint) = 0;
  /// @}

 private:
  struct State {
    std::string name;
    std::optional<std::int32_t> uniqueID;
    std::optional<MIDIObjectRef> reference;
    bool isDisposed = false;
  };

  /// Takes the new endpoint, unless this has been disposed meanwhile.
  bool adopt(MIDIObjectRef endpoint);
  void setUniqueID(std::optional<std::int32_t> uniqueID);

  mutable internals::ThreadSafeAccess<State> state_;
};

}  // namespace midikit::io::internal
