#include "MIDIKitIO/platform/engine/ThruConnections.hpp"

#include <algorithm>

#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"
#include "MIDIKitIO/platform/engine/ThruParameters.hpp"

namespace midikit::io::engine {

OSStatus ThruConnections::create(const std::optional<std::string>& owner,
                                 std::span<const std::uint8_t> parameters, Ref& out) {
  auto read = readThruParameters(parameters);
  if (!read) {
    return statusOf(MIDIOSStatus::internalError);
  }
  if (!owner) {
    out = references_.next();
    own_.emplace(out, ThruConnection{out, *read});
    return noErr;
  }
  nameByUniqueId(std::span(read->sources).first(read->numSources));
  nameByUniqueId(std::span(read->destinations).first(read->numDestinations));
  out = store_->add(*owner, *read);
  return noErr;
}

/// A reference means nothing to the service that will find the connection in the store.
void ThruConnections::nameByUniqueId(std::span<Endpoint> endpoints) const {
  for (auto& endpoint : endpoints) {
    if (endpoint.uniqueID == 0) {
      setup_.integerProperty(endpoint.endpointRef, kMIDIPropertyUniqueID, endpoint.uniqueID);
    }
    endpoint.endpointRef = 0;
  }
}

OSStatus ThruConnections::dispose(Ref connection) {
  if (own_.erase(connection) == 0 && !store_->remove(connection)) {
    return statusOf(MIDIOSStatus::objectNotFound);
  }
  std::erase_if(converters_, [connection](const auto& entry) { return entry.first.first == connection; });
  return noErr;
}

std::set<MIDIObjectRef> ThruConnections::sources() const {
  std::set<Ref> all;
  const auto add = [&](const ThruConnection& connection) {
    for (const auto& endpoint :
         std::span(connection.parameters.sources).first(connection.parameters.numSources)) {
      all.insert(resolve(endpoint, MIDIObjectKind::source));
    }
  };
  for (const auto& [ref, connection] : own_) {
    add(connection);
  }
  for (const auto& connection : store_->all()) {
    add(connection);
  }
  all.erase(0);
  return all;
}

void ThruConnections::forward(Ref source, const SharedMIDIList& list, const HandOn& handOn) {
  for (const auto& [ref, connection] : own_) {
    forwardBy(connection, source, list, handOn);
  }
  for (const auto& connection : store_->all()) {
    forwardBy(connection, source, list, handOn);
  }
}

void ThruConnections::forwardBy(const ThruConnection& connection, Ref source, const SharedMIDIList& list,
                                const HandOn& handOn) {
  const auto& parameters = connection.parameters;
  const auto sources = std::span(parameters.sources).first(parameters.numSources);
  const bool isSource = std::any_of(sources.begin(), sources.end(), [&](const Endpoint& endpoint) {
    return resolve(endpoint, MIDIObjectKind::source) == source;
  });
  if (!isSource) {
    return;
  }
  const auto left = filteredFor(connection, source, list);
  for (const auto& endpoint : std::span(parameters.destinations).first(parameters.numDestinations)) {
    if (const Ref destination = resolve(endpoint, MIDIObjectKind::destination); destination != 0) {
      handOn(connection.ref, destination, left);
    }
  }
}

SharedMIDIList ThruConnections::filteredFor(const ThruConnection& connection, Ref source,
                                            const SharedMIDIList& list) {
  if (!filtersAnything(connection.parameters)) {
    return list;
  }
  const auto* words = std::get_if<MIDIEventList>(list.get());
  const auto key = std::pair(connection.ref, source);
  auto& converter = converters_[key];
  auto left = filtered(converter.toWords(*list, words != nullptr ? words->protocol : MIDIProtocolID::midi1_0),
                       connection.parameters);
  if (converter.isIdle()) {
    converters_.erase(key);
  }
  return std::make_shared<const MIDIList>(std::move(left));
}

MIDIObjectRef ThruConnections::resolve(const Endpoint& endpoint, MIDIObjectKind kind) const {
  const auto* named = setup_.find(endpoint.endpointRef);
  if (named == nullptr && endpoint.uniqueID != 0) {
    named = setup_.find(setup_.endpointWithUniqueId(endpoint.uniqueID));
  }
  return named != nullptr && named->kind == kind ? named->ref : 0;
}

}  // namespace midikit::io::engine
