#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "MIDIKitIO/platform/engine/ListReceiver.hpp"
#include "MIDIKitIO/platform/engine/MIDIConnection.hpp"
#include "MIDIKitIO/platform/engine/MIDIList.hpp"
#include "foundation/run/Clock.hpp"

namespace midikit::io::engine {

/// The ports with their connections, and who reads at the destinations. What is taken out is handed back, so
/// that the caller can close it after the lock. Delivering only queues. Not locked.
class MIDIRouting {
 public:
  using Ref = MIDIObjectRef;
  using Receiver = std::shared_ptr<ListReceiver>;
  using TimePoint = karvex::foundation::TimePoint;

  /// An output port has no receiver.
  void addPort(Ref port, Receiver receiver);
  /// Returns the receiver of an input port through `removed`.
  OSStatus removePort(Ref port, Receiver& removed);
  bool isOutputPort(Ref port) const;

  /// Connecting once more replaces the token; so does connecting to what has been disconnected and hasn't
  /// ended yet, and nothing is lost.
  OSStatus connect(Ref port, Ref source, ConnectionToken token, Handovers& handovers);
  /// The connection is held from now on, and due to end at that moment.
  OSStatus disconnect(Ref port, Ref source, TimePoint endsAt);
  /// Ends what is due. Returns when the next connection is; none if no connection is held.
  std::optional<TimePoint> endConnections(TimePoint now);

  /// What comes to the destination is read by this from now on. Returns the receiver that did so before.
  Receiver setReader(Ref destination, Receiver reader);
  /// What the source sends is read by this too, from now on. Returns the receiver that did so before.
  Receiver setListener(Ref source, Receiver listener) { return setReader(source, std::move(listener)); }
  /// Forgets an endpoint that goes. Returns the receiver that it had.
  Receiver removeEndpoint(Ref endpoint);

  /// Adds a list to those that wait for the ports that are connected to the source.
  void deliverFrom(Ref source, const SharedMIDIList& list, Handovers& handovers) const;
  /// The sources of all connections, held ones included.
  std::set<Ref> connectedSources() const;

  /// Adds a list to those that wait for the reader of the destination, or the listener of the source.
  void deliverTo(Ref endpoint, Ref sender, const SharedMIDIList& list, Handovers& handovers) const;

  /// The reader of a destination; null for none.
  Receiver readerOf(Ref destination) const;

  /// All receivers there are.
  std::vector<Receiver> receivers() const;

 private:
  struct Port {
    Receiver receiver;
    std::map<Ref, std::shared_ptr<MIDIConnection>> connections;  ///< by source
  };

  std::map<Ref, Port> ports_;
  std::map<Ref, Receiver> readers_;  ///< by endpoint
};

}  // namespace midikit::io::engine
