#pragma once

#include <memory>
#include <span>

#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitIO/ports/MIDIInputConnection.hpp"
#include "MIDIKitIO/ports/MIDIOutputConnection.hpp"

namespace midikit::io {

/// Forwards in the place of the platform: an input connection that hears the outputs, and an output
/// connection that sends the same events to the inputs. Events are read and built again on the way, so what
/// is no event doesn't get through.
class MIDIThruConnectionProxy : public std::enable_shared_from_this<MIDIThruConnectionProxy> {
 public:
  /// A proxy that forwards. What was made of it goes again if this throws.
  /// @throws MIDIIOError of its connections
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it asks the service.
  static std::shared_ptr<MIDIThruConnectionProxy> create(const std::shared_ptr<MIDIManager>& manager,
                                                         CoreMIDIAPIVersion api,
                                                         const MIDIEndpointIdentities& outputs,
                                                         const MIDIEndpointIdentities& inputs);
  MIDIThruConnectionProxy(const MIDIThruConnectionProxy&) = delete;
  MIDIThruConnectionProxy& operator=(const MIDIThruConnectionProxy&) = delete;

  /// @name Its two connections
  /// The manager holds neither of them in its maps.
  /// @{
  const std::shared_ptr<MIDIInputConnection>& inputConnection() const { return inputConnection_; }
  const std::shared_ptr<MIDIOutputConnection>& outputConnection() const { return outputConnection_; }
  /// @}

  /// Lets the input connection follow a change of the setup, then the output connection, whatever becomes of
  /// the first.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it locks and asks the service.
  void follow(const MIDIIORawNotification& change) noexcept;

  /// Disposes both connections.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it waits for a list that is being received.
  void dispose() noexcept;

 private:
  MIDIThruConnectionProxy() = default;
  void forward(std::span<const core::MIDIEvent> events) noexcept;

  std::shared_ptr<MIDIInputConnection> inputConnection_;
  std::shared_ptr<MIDIOutputConnection> outputConnection_;
};

}  // namespace midikit::io
