#pragma once

#include <string>
#include <string_view>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "MIDIKitIO/platform/engine/MIDIDriverHost.hpp"
#include "MIDIKitIO/platform/engine/MIDIObject.hpp"

namespace midikit::io::engine {

/// What a service needs of its equipment's side: of the kernel's sequencer, of a rig. The service calls on
/// the thread on which things happen, without a lock, and several calls may be under way at once and overtake
/// one another; so a call says that something is new, and the driver asks its host what it is now.
///
/// What a driver needn't know it doesn't override.
class MIDIDriver {
 public:
  virtual ~MIDIDriver() = default;
  MIDIDriver() = default;
  MIDIDriver(const MIDIDriver&) = delete;
  MIDIDriver& operator=(const MIDIDriver&) = delete;

  /// Comes once, before everything else. The host may be used until detach() returns.
  virtual void attach(MIDIDriverHost& host) = 0;
  /// Comes once. From its return on nothing comes from the driver, and the blocks that read for it return
  /// soon; the service waits for them. Until it has done so, blocks that still run may cause the calls below.
  virtual void detach() {}

  /// The program has made a client of this name.
  virtual void clientAdded(const std::string& /*name*/) {}
  /// One of this program's own endpoints is there; the operation that made it hasn't returned.
  virtual void ownEndpointAdded(MIDIObjectRef /*endpoint*/, MIDIObjectKind /*kind*/) {}
  /// It has gone.
  virtual void ownEndpointRemoved(MIDIObjectRef /*endpoint*/) {}
  /// The program has set this property of one of its own endpoints.
  virtual void ownEndpointChanged(MIDIObjectRef /*endpoint*/, std::string_view /*key*/) {}
  /// The result of MIDIDriverHost::wantedSources or plainThruConnections may be another one.
  virtual void wantedSourcesChanged() {}

  /// Whether the equipment hands on from the source to the destination without this program, as
  /// MIDIDriverHost::plainThruConnections asks it to. Neither is one of this program's own. Called under the
  /// service's lock: the host mustn't be used.
  virtual bool connectsByItself(MIDIObjectRef /*source*/, MIDIObjectRef /*destination*/) const {
    return false;
  }
};

}  // namespace midikit::io::engine
