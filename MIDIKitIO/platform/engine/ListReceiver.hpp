#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <variant>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "MIDIKitIO/platform/engine/BlockGate.hpp"
#include "MIDIKitIO/platform/engine/ListConversion.hpp"
#include "MIDIKitIO/platform/engine/MIDIConnection.hpp"
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

/// Hands lists to a reader, one at a time, on a queue, each in the generation and protocol that the reader
/// wants. All operations may be called on any thread.
class ListReceiver : public std::enable_shared_from_this<ListReceiver> {
 public:
  /// The queue must be serial. Runtime and queue must outlive the receiver's use.
  ListReceiver(karvex::foundation::Runtime& runtime, karvex::foundation::Queue& queue, MIDIReader reader);

  /// A list that came by a connection.
  void deliver(SharedMIDIList list, const std::shared_ptr<MIDIConnection>& connection);
  /// What waits on a connection that goes on.
  void catchUp(const std::shared_ptr<MIDIConnection>& connection);

  /// A list that was sent here. `sender` separates the lists of one sender from those of another: a system
  /// exclusive message may be spread over several lists.
  void deliver(SharedMIDIList list, MIDIObjectRef sender);

  /// No list is handed over any more, and none is being read when this returns, unless on this thread.
  void close() { gate_.close(); }

 private:
  /// Hands over at most so many of the lists that wait.
  void takeFrom(const std::shared_ptr<MIDIConnection>& connection, std::size_t most);
  ListConverter& converterFor(MIDIObjectRef sender);
  void handOver(const MIDIList& list, ListConverter& converter, ConnectionToken token);

  karvex::foundation::Queue& queue_;
  MIDIReader reader_;
  BlockGate gate_;
  /// By sender, those inside of a message. Used on the queue alone, as what follows.
  std::map<MIDIObjectRef, ListConverter> converters_;
  /// One that is inside of none, for the memory that it has.
  std::map<MIDIObjectRef, ListConverter>::node_type spare_;
};

}  // namespace midikit::io::engine
