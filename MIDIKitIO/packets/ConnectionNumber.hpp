#pragma once

#include <optional>
#include <string>

#include "MIDIKitIO/packets/AnyMIDIPacket.hpp"
#include "MIDIKitIO/platform/MIDIService.hpp"
#include "MIDIKitInternals/ThreadSafeAccess.hpp"

namespace midikit::io {

/// What a connection hands to the platform as its token, by address: the reference of the source. It must
/// stay where it is until no block can run any more that was given the token, which is when the port has been
/// disposed.
class ConnectionNumber {
 public:
  explicit ConnectionNumber(MIDIObjectRef reference) : reference_(reference) {}
  ConnectionNumber(const ConnectionNumber&) = delete;
  ConnectionNumber& operator=(const ConnectionNumber&) = delete;

  MIDIObjectRef reference() const { return reference_; }

  /// What comes back as a token for this number.
  ConnectionToken token() const { return this; }
  /// The number of a token; null for none.
  static const ConnectionNumber* of(ConnectionToken token) {
    return static_cast<const ConnectionNumber*>(token);
  }

  /// The source's record as the platform has it at this moment; none if its unique ID reads as 0. The record
  /// of the last call is returned again if nothing in it has changed.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it locks and asks the service; it allocates when the record has changed.
  MIDIPacketSource source(const MIDIService& service) const;

 private:
  struct LastReading {
    MIDIPacketSource record;
    /// Their memory serves the next reading.
    std::optional<std::string> name;
    std::optional<std::string> displayName;
  };

  MIDIObjectRef reference_;
  mutable internals::ThreadSafeAccess<LastReading> last_;
};

}  // namespace midikit::io
