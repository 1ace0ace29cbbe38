#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "MIDIKitIO/manager/CoreMIDIAPIVersion.hpp"
#include "MIDIKitIO/platform/MIDIService.hpp"

namespace midikit::io {

class MIDIIORawNotification;
class MIDIManager;

/// An object that a manager holds under a tag, and that refers back to it without keeping it alive. Its
/// destructor frees what it has on the platform. That runs on the manager's eventQueue when the object is
/// removed or replaced, on the notification thread if it is following a change just then, and on whatever
/// thread lets go of the manager.
class MIDIManaged {
 public:
  virtual ~MIDIManaged() = default;
  MIDIManaged(const MIDIManaged&) = delete;
  MIDIManaged& operator=(const MIDIManaged&) = delete;

  /// The interface that the object uses, one that the platform has. Any thread.
  CoreMIDIAPIVersion api() const { return api_; }

  /// None once the manager is gone. Any thread.
  std::shared_ptr<MIDIManager> midiManager() const { return midiManager_.lock(); }

 protected:
  /// Takes the older interface if the platform doesn't have `api`.
  MIDIManaged(const std::shared_ptr<MIDIManager>& manager, CoreMIDIAPIVersion api);

  /// There for as long as the object, also when the manager is gone.
  MIDIService& service() const { return *service_; }

 private:
  std::weak_ptr<MIDIManager> midiManager_;
  std::shared_ptr<MIDIService> service_;
  CoreMIDIAPIVersion api_;
};

/// An endpoint that the program itself makes.
class MIDIManagedEndpoint : public MIDIManaged {
 public:
  /// The unique ID in use, if there is one. Any thread. Must not wait for whoever waits for the manager.
  virtual std::optional<std::int32_t> uniqueID() const = 0;

 protected:
  using MIDIManaged::MIDIManaged;
};

/// A connection with endpoints that come and go.
class MIDIManagedConnection : public MIDIManaged {
 public:
  /// Something changed, and the manager's lists are up to date: the connection adapts itself. On the
  /// notification thread, beside whatever eventQueue does to the connection. A MIDIIOError that it throws is
  /// dropped.
  virtual void follow(const MIDIIORawNotification& change) = 0;

 protected:
  using MIDIManaged::MIDIManaged;
};

}  // namespace midikit::io
