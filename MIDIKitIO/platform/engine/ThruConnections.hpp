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
///
/// Every program that shares the store sees the same equipment, so of the store's connections only some are
/// this program's to forward: those of an endpoint of its own; between two others, if it is the one that
/// forwards, those with filters and those that the equipment doesn't make by itself.
class ThruConnections {
 public:
  using Ref = MIDIObjectRef;

  /// Whether the equipment hands on from one to the other by itself; called under the service's lock.
  using IsDirect = std::function<bool(Ref source, Ref destination)>;

  /// References and setup must outlive the connections.
  ThruConnections(References& references, const MIDISetup& setup, std::shared_ptr<ThruConnectionStore> store,
                  IsDirect isDirect)
      : references_(references), setup_(setup), store_(std::move(store)), isDirect_(std::move(isDirect)) {}

  /// With an owner the connection goes to the store.
  OSStatus create(const std::optional<std::string>& owner, std::span<const std::uint8_t> parameters,
                  Ref& out);
  OSStatus dispose(Ref connection);
  std::vector<Ref> ownedBy(const std::string& owner) const { return store_->ownedBy(owner); }

  /// The sources that there are of all connections that are forwarded here.
  std::set<Ref> sources() const;
  /// From where to where the store's connections without filters go, but for this program's own endpoints.
  std::set<std::pair<Ref, Ref>> plainConnections() const;

  /// Hands on what is left of a list: by which connection, to which destination.
  using HandOn = std::function<void(Ref connection, Ref destination, const SharedMIDIList& list)>;
  /// A list came from that source.
  void forward(Ref source, const SharedMIDIList& list, const HandOn& handOn);

 private:
  using Endpoint = MIDIThruConnectionEndpoint;

  /// By the connection, from the source; one of the store's only what is this program's to forward.
  std::vector<Ref> destinationsOf(const ThruConnection& connection, Ref source, bool isStored) const;
  std::vector<Ref> resolved(std::span<const Endpoint> endpoints, MIDIObjectKind kind) const;
  std::vector<Ref> sourcesOf(const ThruConnection& connection) const;
  bool isOwn(Ref endpoint) const;
  SharedMIDIList filteredFor(const ThruConnection& connection, Ref source, const SharedMIDIList& list);
  void nameByUniqueId(std::span<Endpoint> endpoints) const;
  Ref resolve(const Endpoint& endpoint, MIDIObjectKind kind) const;

  References& references_;
  const MIDISetup& setup_;
  std::shared_ptr<ThruConnectionStore> store_;
  IsDirect isDirect_;
  std::map<Ref, ThruConnection> own_;
  /// By connection and source: filters look at whole messages.
  std::map<std::pair<Ref, Ref>, ListConverter> converters_;
};

}  // namespace midikit::io::engine
