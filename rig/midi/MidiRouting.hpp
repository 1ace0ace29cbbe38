#pragma once

#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "rig/midi/MidiList.hpp"
#include "rig/midi/MidiReceiver.hpp"

namespace karvex::rig {

/// The ports with their connections, and who reads at the destinations. What is taken out is handed back, so
/// that the caller can close it behind the lock. Delivering only queues. Not locked.
class MidiRouting {
 public:
  using Ref = midikit::io::MIDIObjectRef;
  using OSStatus = midikit::io::OSStatus;
  using Receiver = std::shared_ptr<MidiReceiver>;

  /// An output port has no receiver.
  void addPort(Ref port, Receiver receiver);
  /// Gives the receiver of an input port through `removed`.
  OSStatus removePort(Ref port, Receiver& removed);
  bool isOutputPort(Ref port) const;

  /// Connecting once more replaces the token.
  OSStatus connect(Ref port, Ref source, midikit::io::ConnectionToken token);
  OSStatus disconnect(Ref port, Ref source);

  /// What comes to the destination is read by this from now on. Gives the receiver that did so before.
  Receiver setReader(Ref destination, Receiver reader);
  /// Forgets an endpoint that goes. Gives the receiver that it had.
  Receiver removeEndpoint(Ref endpoint);

  /// Hands a list to the ports that are connected to the source.
  void deliverFrom(Ref source, const SharedMidiList& list) const;
  /// Hands a list to the reader of the destination.
  void deliverTo(Ref destination, Ref sender, const SharedMidiList& list) const;

  /// All receivers there are.
  std::vector<Receiver> receivers() const;

 private:
  struct Port {
    Receiver receiver;
    std::map<Ref, std::shared_ptr<MidiConnection>> connections;  ///< by source
  };

  std::map<Ref, Port> ports_;
  std::map<Ref, Receiver> readers_;  ///< by destination
};

}  // namespace karvex::rig
