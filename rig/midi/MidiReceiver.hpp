#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <variant>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "foundation/Queue.hpp"
#include "foundation/Runtime.hpp"
#include "rig/midi/BlockGate.hpp"
#include "rig/midi/ListConversion.hpp"
#include "rig/midi/MidiList.hpp"

namespace karvex::rig {

/// A block that wants words of a protocol.
struct WordReader {
  midikit::io::MIDIProtocolID protocol;
  midikit::io::MIDIReceiveBlock block;
};

/// A block that wants lists of one generation.
using MidiReader = std::variant<WordReader, midikit::io::MIDIReadBlock>;

/// Between a port and a source. Behind its end no list of it is handed over any more, although some may wait.
struct MidiConnection {
  explicit MidiConnection(midikit::io::ConnectionToken itsToken) : token(itsToken) {}

  const midikit::io::ConnectionToken token;
  std::atomic<bool> stands = true;
  ListConverter converter;  ///< used on the receiver's queue alone
};

/// Hands lists to a reader, one at a time, on a queue, each in the generation and protocol that the reader
/// wants. All operations may be called on any thread.
class MidiReceiver : public std::enable_shared_from_this<MidiReceiver> {
 public:
  /// The queue must be serial. Runtime and queue must outlive the receiver's use.
  MidiReceiver(foundation::Runtime& runtime, foundation::Queue& queue, MidiReader reader);

  /// A list that came by a connection.
  void deliver(SharedMidiList list, std::shared_ptr<MidiConnection> connection);

  /// A list that was sent here. `sender` tells the lists of one sender from those of another: a system
  /// exclusive message may be spread over several lists.
  void deliver(SharedMidiList list, midikit::io::MIDIObjectRef sender);

  /// No list is handed over any more, and none is being read when this returns, unless on this thread.
  void close() { gate_.close(); }

 private:
  void handOver(const MidiList& list, ListConverter& converter, midikit::io::ConnectionToken token);

  foundation::Queue& queue_;
  MidiReader reader_;
  BlockGate gate_;
  std::map<midikit::io::MIDIObjectRef, ListConverter> converters_;  ///< by sender; used on the queue alone
};

}  // namespace karvex::rig
