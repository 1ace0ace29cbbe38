#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <variant>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "MIDIKitIO/platform/engine/BlockGate.hpp"
#include "MIDIKitIO/platform/engine/ListConversion.hpp"
#include "MIDIKitIO/platform/engine/MIDIConnection.hpp"
#include "MIDIKitIO/platform/engine/MIDIList.hpp"
#include "MIDIKitInternals/InlineVector.hpp"
#include "foundation/run/Runtime.hpp"
#include "foundation/run/SerialQueue.hpp"
#include "foundation/run/WaitingLine.hpp"

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
  /// Any thread may call one that never waits.
  enum class Manner { mayWait, neverWaits };

  /// Runtime and queue must outlive the receiver's use.
  ListReceiver(karvex::foundation::Runtime& runtime, karvex::foundation::SerialQueue& queue,
               MIDIReader reader, Manner manner = Manner::mayWait);

  /// Has the reader read a list that was sent here, before this returns and on the calling thread, if the
  /// reader never waits and its queue is idle. Otherwise false, and nothing has happened.
  bool readAtOnce(MIDIListView list, MIDIObjectRef sender);

  /// @name What waits for its turn, in the order of these calls; one handOverNext() for each
  /// @{

  /// A list that came by a connection.
  void add(SharedMIDIList list, const std::shared_ptr<MIDIConnection>& connection);
  /// What waits on a connection that goes on.
  void addWaiting(const std::shared_ptr<MIDIConnection>& connection);
  /// A list that was sent here. `sender` separates the lists of one sender from those of another: a system
  /// exclusive message may be spread over several lists.
  void add(SharedMIDIList list, MIDIObjectRef sender);
  /// @}

  /// The thread on which a reader that may wait is called. If its queue is busy, it is always the queue's.
  enum class Thread { queues, callers };
  /// Calls the reader, always as a job of the queue, or has the queue call it.
  void handOverNext(Thread thread);

  /// No list is handed over any more, and none is being read when this returns, unless on this thread.
  void close() { gate_.close(); }

 private:
  struct Entry {
    std::shared_ptr<MIDIConnection> connection;  ///< it holds the lists
    std::size_t count = 0;                       ///< at most so many of them
    SharedMIDIList list;                         ///< the one, if there is no connection
    MIDIObjectRef sender = 0;
  };

  void push(Entry entry);
  void takeNext();
  void takeFrom(const Entry& entry);
  void read(MIDIListView list, MIDIObjectRef sender);
  void handOver(MIDIListView list, ListConverter& converter, ConnectionToken token);

  karvex::foundation::SerialQueue& queue_;
  MIDIReader reader_;
  const Manner manner_;
  BlockGate gate_;
  std::mutex mutex_;  ///< of what follows
  karvex::foundation::WaitingLine<Entry> line_;
  /// By sender, those inside of a message. Used on the queue alone, as what follows.
  std::map<MIDIObjectRef, ListConverter> converters_;
  /// For all other senders.
  ListConverter idle_;
};

/// The receivers to which lists were added under a lock, for the handover after it.
class Handovers {
 public:
  /// Null is none.
  void add(std::shared_ptr<ListReceiver> receiver) {
    if (receiver != nullptr) {
      receivers_.push_back(std::move(receiver));
    }
  }
  bool empty() const { return receivers_.empty(); }
  void make(ListReceiver::Thread thread) const {
    for (const auto& receiver : receivers_) {
      receiver->handOverNext(thread);
    }
  }

 private:
  internals::InlineVector<std::shared_ptr<ListReceiver>, 4> receivers_;
};

}  // namespace midikit::io::engine
