#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"

namespace midikit::io {

/// What sends MIDI: an output as a virtual source, an output connection to its destinations. Sends run on the
/// caller's thread, and nothing is retried.
///
/// They throw a MIDIIOError, or a MIDIKitInternalError if the messages fit into no list. Neither is derived
/// from the other; both are a std::exception.
class MIDIManagedSendsMessages {
 public:
  virtual ~MIDIManagedSendsMessages() = default;
  MIDIManagedSendsMessages(const MIDIManagedSendsMessages&) = delete;
  MIDIManagedSendsMessages& operator=(const MIDIManagedSendsMessages&) = delete;

  /// Sends one event, in the older interface as bytes and in the newer one as universal packets. The newer
  /// one sends nothing for an event without packets; the older one sends an empty packet for an event without
  /// bytes.
  /// @throws MIDIIOError `internalInconsistency`, or `osStatus` from an output
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, the service locks. A short event is not allocated for here.
  virtual void sendEvent(const core::MIDIEvent& event) = 0;

  /// Sends events in their order. The older interface sends them as one list with one time stamp, unless a
  /// system exclusive one is among them; otherwise it is as if each was sent by itself, and the first failure
  /// ends the send.
  /// @throws MIDIIOError as sendEvent()
  /// @throws MIDIKitInternalError if the older interface's list has more than 65536 bytes: nothing is sent
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, the service locks, and the older interface's list allocates.
  virtual void sendEvents(std::span<const core::MIDIEvent> events) = 0;

 protected:
  MIDIManagedSendsMessages() = default;
};

namespace internal {

/// What sending events rests on: raw bytes and words, and the platform's lists.
class MIDIManagedSendsMessages : public io::MIDIManagedSendsMessages {
 public:
  /// Sends bytes as one packet, through the older interface alone.
  /// @throws MIDIIOError as sendEvent()
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, the service locks. Up to 16 bytes are not allocated for here.
  virtual void sendRawMessage(std::span<const std::uint8_t> message) = 0;

  /// Sends a list with one packet for each message, through the older interface alone.
  /// @throws MIDIIOError as sendEvent()
  /// @throws MIDIKitInternalError if the list has more than 65536 bytes
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, it allocates, and the service locks.
  virtual void sendRawMessages(std::span<const std::vector<std::uint8_t>> messages) = 0;

  /// Sends the words of one universal packet, through the newer interface alone.
  /// @throws MIDIIOError as sendEvent()
  /// @throws MIDIKitInternalError unless there are 1 to 64 words
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, the service locks.
  virtual void sendUniversalWords(std::span<const std::uint32_t> words) = 0;

  /// Delivers a list as it is.
  /// @throws MIDIIOError `internalInconsistency` without a port, or `osStatus` from an output
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, the service locks.
  virtual void sendPacketList(const MIDIPacketList& list) = 0;

  /// The same for a word-oriented list.
  ///
  /// Thread-safe: yes.
  /// Realtime-safe: no, the service locks.
  virtual void sendEventList(const MIDIEventList& list) = 0;
};

}  // namespace internal
}  // namespace midikit::io
