#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <variant>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "MIDIKitIO/platform/engine/BlockGate.hpp"
#include "MIDIKitIO/platform/engine/ListConversion.hpp"
#include "MIDIKitIO/platform/engine/MIDIList.hpp"
#include "foundation/Queue.hpp"
#include "foundation/Runtime.hpp"

namespace midikit::io::engine {

/// A block that wants words of a protocol.
struct WordReader {
  MIDIProtocolID protocol;
  MIDIReceiveBlock block;
};

/// A block that wants lists of one generation.
using MIDIReader = std::variant<WordReader, MIDIReadBlock>;

/// Between a port and a source. Behind its end no list of it is handed over any more, although some may wait.
struct MIDIConnection {
  explicit MIDIConnection(ConnectionToken itsToken) : token(itsToken) {}

  const ConnectionToken token;
  std::atomic<bool> stands = true;
  ListConverter converter;  ///< used on the receiver's queue alone
};

/// Hands lists to a reader, one at a time, on a queue, each in the generation and protocol that the reader
/// wants. All operations may be called on any thread.
class ListReceiver : public std::enable_shared_from_this<ListReceiver> {
 public:
  /// The queue must be serial. Runtime and queue must outlive the receiver's use.
  ListReceiver(karvex::foundation::Runtime& runtime, karvex::foundation::Queue& queue, MIDIReader reader);

  /// A list that came by a connection.
  void deliver(SharedMIDIList list, std::shared_ptr<MIDIConnection> connection);

  /// A list that was sent here. `sender` tells the lists of one sender from those of another: a system
  /// exclusive message may be spread over several lists.
  void deliver(SharedMIDIList list, MIDIObjectRef sender);

  /// No list is handed over any more, and none is being read when this returns, unless on this thread.
  void close() { gate_.close(); }

 private:
  void handOver(const MIDIList& list, ListConverter& converter, ConnectionToken token);

  karvex::foundation::Queue& queue_;
  MIDIReader reader_;
  BlockGate gate_;
  std::map<MIDIObjectRef, ListConverter> converters_;  ///< by sender; used on the queue alone
};

}  // namespace midikit::io::engine
