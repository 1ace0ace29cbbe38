#pragma once

#include <concepts>
#include <memory>
#include <string>

#include "MIDIKitIO/manager/CoreMIDIAPIVersion.hpp"
#include "MIDIKitIO/platform/MIDIService.hpp"
#include "MIDIKitIO/receive/MIDIReceiverProtocol.hpp"

namespace midikit::io {

class MIDIManager;

/// An object that a manager makes and holds under a tag, and that refers back to it without keeping it alive.
class MIDIManaged {
 public:
  virtual ~MIDIManaged() = default;
  MIDIManaged(const MIDIManaged&) = delete;
  MIDIManaged& operator=(const MIDIManaged&) = delete;

  /// The interface that the object uses, one that the platform has.
  virtual CoreMIDIAPIVersion api() const = 0;

  /// None once the manager is gone.
  virtual std::shared_ptr<MIDIManager> midiManager() const = 0;

  /// Frees what the object has on the platform, and lets go of its receive handler: packets that still wait
  /// are dropped. Nothing brings it back. The manager calls it on eventQueue when it removes or replaces the
  /// object, even if others still hold it. Calling it again does nothing.
  ///
  /// Thread-safe: yes, but not under a lock that a receiver waits for.
  /// Realtime-safe: no, it waits for a list that is being received.
  virtual void dispose() noexcept = 0;

  /// What the object is, for people.
  virtual std::string description() const = 0;

 protected:
  MIDIManaged() = default;
};

/// What receives packets: MIDIInput and MIDIInputConnection. MIDIManagedSendsMessages is its counterpart.
template <class T>
concept MIDIManagedReceivesMessages = std::derived_from<T, MIDIManaged> && requires(const T& object) {
  { object.receiveHandler() } -> std::same_as<std::shared_ptr<MIDIReceiverProtocol>>;
};

namespace internal {

/// What all managed objects have.
class MIDIManaged : public io::MIDIManaged {
 public:
  CoreMIDIAPIVersion api() const final { return api_; }
  std::shared_ptr<MIDIManager> midiManager() const final { return midiManager_.lock(); }

 protected:
  /// Takes the older interface if the platform doesn't have `api`.
  MIDIManaged(const std::shared_ptr<MIDIManager>& manager, CoreMIDIAPIVersion api);

  /// Lives as long as the object, even when the manager is gone.
  MIDIService& service() const { return *service_; }

 private:
  std::weak_ptr<MIDIManager> midiManager_;
  std::shared_ptr<MIDIService> service_;
  CoreMIDIAPIVersion api_;
};

}  // namespace internal
}  // namespace midikit::io
