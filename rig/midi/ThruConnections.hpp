#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "rig/midi/ListConversion.hpp"
#include "rig/midi/MidiList.hpp"
#include "rig/midi/MidiSetup.hpp"
#include "rig/midi/References.hpp"
#include "rig/midi/ThruConnectionStore.hpp"

namespace karvex::rig {

/// The thru connections of a service: its own, and those of the store. An endpoint is found by its reference
/// or, when that has gone, by its unique ID, so a connection holds while its equipment is away. Not locked.
class ThruConnections {
 public:
  using Ref = midikit::io::MIDIObjectRef;
  using OSStatus = midikit::io::OSStatus;

  /// References and setup must outlive the connections.
  ThruConnections(References& references, const MidiSetup& setup, std::shared_ptr<ThruConnectionStore> store)
      : references_(references), setup_(setup), store_(std::move(store)) {}

  /// With an owner the connection goes to the store.
  OSStatus create(const std::optional<std::string>& owner, std::span<const std::uint8_t> parameters,
                  Ref& out);
  OSStatus dispose(Ref connection);
  std::vector<Ref> ownedBy(const std::string& owner) const { return store_->ownedBy(owner); }

  /// Hands on what is left of a list: by which connection, to which destination.
  using HandOn = std::function<void(Ref connection, Ref destination, const SharedMidiList& list)>;
  /// A list came from that source.
  void forward(Ref source, const SharedMidiList& list, const HandOn& handOn);

 private:
  using Endpoint = midikit::io::MIDIThruConnectionEndpoint;

  void forwardBy(const ThruConnection& connection, Ref source, const SharedMidiList& list,
                 const HandOn& handOn);
  SharedMidiList filteredFor(const ThruConnection& connection, Ref source, const SharedMidiList& list);
  void nameByUniqueId(std::span<Endpoint> endpoints) const;
  Ref resolve(const Endpoint& endpoint, MidiObjectKind kind) const;

  References& references_;
  const MidiSetup& setup_;
  std::shared_ptr<ThruConnectionStore> store_;
  std::map<Ref, ThruConnection> own_;
  /// By connection and source: filters look at whole messages.
  std::map<std::pair<Ref, Ref>, ListConverter> converters_;
};

}  // namespace karvex::rig
