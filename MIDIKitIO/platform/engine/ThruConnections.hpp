#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "MIDIKitIO/platform/engine/ListConversion.hpp"
#include "MIDIKitIO/platform/engine/MIDIList.hpp"
#include "MIDIKitIO/platform/engine/MIDISetup.hpp"
#include "MIDIKitIO/platform/engine/References.hpp"
#include "MIDIKitIO/platform/engine/ThruConnectionStore.hpp"

namespace midikit::io::engine {

/// The thru connections of a service: its own, and those of the store. An endpoint is found by its reference
/// or, when that has gone, by its unique ID, so a connection holds while its equipment is away. Not locked.
class ThruConnections {
 public:
  using Ref = MIDIObjectRef;

  /// References and setup must outlive the connections.
  ThruConnections(References& references, const MIDISetup& setup, std::shared_ptr<ThruConnectionStore> store)
      : references_(references), setup_(setup), store_(std::move(store)) {}

  /// With an owner the connection goes to the store.
  OSStatus create(const std::optional<std::string>& owner, std::span<const std::uint8_t> parameters,
                  Ref& out);
  OSStatus dispose(Ref connection);
  std::vector<Ref> ownedBy(const std::string& owner) const { return store_->ownedBy(owner); }

  /// The sources that there are of all connections.
  std::set<Ref> sources() const;

  /// Hands on what is left of a list: by which connection, to which destination.
  using HandOn = std::function<void(Ref connection, Ref destination, const SharedMIDIList& list)>;
  /// A list came from that source.
  void forward(Ref source, const SharedMIDIList& list, const HandOn& handOn);

 private:
  using Endpoint = MIDIThruConnectionEndpoint;

  void forwardBy(const ThruConnection& connection, Ref source, const SharedMIDIList& list,
                 const HandOn& handOn);
  SharedMIDIList filteredFor(const ThruConnection& connection, Ref source, const SharedMIDIList& list);
  void nameByUniqueId(std::span<Endpoint> endpoints) const;
  Ref resolve(const Endpoint& endpoint, MIDIObjectKind kind) const;

  References& references_;
  const MIDISetup& setup_;
  std::shared_ptr<ThruConnectionStore> store_;
  std::map<Ref, ThruConnection> own_;
  /// By connection and source: filters look at whole messages.
  std::map<std::pair<Ref, Ref>, ListConverter> converters_;
};

}  // namespace midikit::io::engine
