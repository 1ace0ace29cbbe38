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
  for (const auto& [ref, connection] : own_) {
    const auto sources = sourcesOf(connection);
    all.insert(sources.begin(), sources.end());
  }
  for (const auto& connection : store_->all()) {
    for (const Ref source : sourcesOf(connection)) {
      if (!destinationsOf(connection, source, true).empty()) {
        all.insert(source);
      }
    }
  }
  return all;
}

std::set<std::pair<MIDIObjectRef, MIDIObjectRef>> ThruConnections::plainConnections() const {
  std::set<std::pair<Ref, Ref>> all;
  for (const auto& connection : store_->all()) {
    for (const Ref source : sourcesOf(connection)) {
      for (const Ref destination : destinationsOf(connection, source, false)) {
        if (!filtersAnything(connection.parameters) && !isOwn(source) && !isOwn(destination)) {
          all.emplace(source, destination);
        }
      }
    }
  }
  return all;
}

void ThruConnections::forward(Ref source, const SharedMIDIList& list, const HandOn& handOn) {
  const auto forwardBy = [&](const ThruConnection& connection, bool isStored) {
    const auto sources = sourcesOf(connection);
    if (std::ranges::find(sources, source) == sources.end()) {
      return;
    }
    const auto destinations = destinationsOf(connection, source, isStored);
    if (destinations.empty()) {
      return;
    }
    const auto left = filteredFor(connection, source, list);
    for (const Ref destination : destinations) {
      handOn(connection.ref, destination, left);
    }
  };
  for (const auto& [ref, connection] : own_) {
    forwardBy(connection, false);
  }
  for (const auto& connection : store_->all()) {
    forwardBy(connection, true);
  }
}

std::vector<MIDIObjectRef> ThruConnections::destinationsOf(const ThruConnection& connection, Ref source,
                                                           bool isStored) const {
  const auto& parameters = connection.parameters;
  auto all = resolved(std::span(parameters.destinations).first(parameters.numDestinations),
                      MIDIObjectKind::destination);
  if (isStored && !isOwn(source)) {
    std::erase_if(all, [&](Ref destination) {
      const bool isElsewhere =
          !store_->isForwarding() || (!filtersAnything(parameters) && isDirect_(source, destination));
      return isElsewhere && !isOwn(destination);
    });
  }
  return all;
}

std::vector<MIDIObjectRef> ThruConnections::sourcesOf(const ThruConnection& connection) const {
  const auto& parameters = connection.parameters;
  return resolved(std::span(parameters.sources).first(parameters.numSources), MIDIObjectKind::source);
}

std::vector<MIDIObjectRef> ThruConnections::resolved(std::span<const Endpoint> endpoints,
                                                     MIDIObjectKind kind) const {
  std::vector<Ref> all;
  for (const auto& endpoint : endpoints) {
    if (const Ref found = resolve(endpoint, kind); found != 0) {
      all.push_back(found);
    }
  }
  return all;
}

bool ThruConnections::isOwn(Ref endpoint) const {
  const auto* object = setup_.find(endpoint);
  return object != nullptr && object->isOwn;
}

SharedMIDIList ThruConnections::filteredFor(const ThruConnection& connection, Ref source,
                                            const SharedMIDIList& list) {
  if (!filtersAnything(connection.parameters)) {
    return list;
  }
  const auto* words = std::get_if<MIDIEventList>(list.get());
  const auto key = std::pair(connection.ref, source);
  auto& converter = converters_[key];
  MIDIEventList room;
  const auto protocol = words != nullptr ? words->protocol : MIDIProtocolID::midi1_0;
  auto left = filtered(converter.toWords(viewOf(*list), protocol, room), connection.parameters);
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
