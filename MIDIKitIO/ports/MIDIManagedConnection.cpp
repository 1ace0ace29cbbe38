#include "MIDIKitIO/ports/MIDIManagedConnection.hpp"

#include <algorithm>
#include <utility>
#include <vector>

#include "MIDIKitIO/manager/DroppedErrors.hpp"
#include "MIDIKitIO/manager/MIDIManager.hpp"
#include "MIDIKitIO/objects/ObjectFor.hpp"
#include "MIDIKitIO/objects/SystemObjects.hpp"
#include "MIDIKitInternals/Text.hpp"

namespace midikit::io::internal {
namespace {

MIDIEndpointIdentities identitiesInSystem(const MIDIService& service, MIDIEndpointType kind) {
  return kind == MIDIEndpointType::output ? identitiesOf(systemSources(service))
                                          : identitiesOf(systemDestinations(service));
}

template <class Endpoint>
std::set<MIDIObjectRef> locatedIn(const std::vector<Endpoint>& endpoints,
                                  const MIDIEndpointIdentities& identities) {
  std::set<MIDIObjectRef> references;
  for (const auto& identity : identities) {
    if (const auto endpoint = identity.locateIn(endpoints)) {
      references.insert(endpoint->coreMIDIObjectRef);
    }
  }
  return references;
}

bool concernsConnections(const MIDIIORawNotification& change) {
  using Raw = MIDIIORawNotification;
  return std::holds_alternative<Raw::Added>(change.asCase()) ||
         std::holds_alternative<Raw::Removed>(change.asCase()) ||
         std::holds_alternative<Raw::SetupChanged>(change.asCase());
}

}  // namespace

MIDIManagedConnection::MIDIManagedConnection(const std::shared_ptr<MIDIManager>& manager, Settings settings)
    : MIDIManaged(manager, settings.api), settings_(std::move(settings)) {
  update(settings_.matching ? *settings_.matching : identitiesInSystem(service(), settings_.kind),
         ownedIDs(manager.get()));
}

void MIDIManagedConnection::follow(const MIDIIORawNotification& change) noexcept {
  const auto manager = midiManager();
  if (!manager || !concernsConnections(change)) {
    return;
  }
  auto criteria = joining(change);
  const auto owned = criteria.empty() ? std::set<std::int32_t>() : ownedIDs(manager.get());
  const auto locked = lock();
  if (!criteria.empty()) {
    criteria.insert(criteria_.begin(), criteria_.end());
    update(std::move(criteria), owned);
  }
  droppingErrors([&] { refresh(*manager, criteria_); });
}

void MIDIManagedConnection::catchUp() {
  if (settings_.matching) {
    return;
  }
  auto criteria = identitiesInSystem(service(), settings_.kind);
  const auto owned = ownedIDs(midiManager().get());
  const auto locked = lock();
  criteria.insert(criteria_.begin(), criteria_.end());
  update(std::move(criteria), owned);
}

MIDIEndpointIdentities MIDIManagedConnection::criteria() const {
  const auto locked = lock();
  return criteria_;
}

void MIDIManagedConnection::addCriteria(const MIDIEndpointIdentities& identities) {
  const auto manager = midiManager();
  const auto owned = ownedIDs(manager.get());
  const auto locked = lock();
  auto criteria = criteria_;
  criteria.insert(identities.begin(), identities.end());
  update(std::move(criteria), owned);
  if (manager) {
    droppingErrors([&] { refresh(*manager, criteria_); });
  }
}

void MIDIManagedConnection::removeCriteria(const MIDIEndpointIdentities& identities) {
  removeCriteria([&](const MIDIEndpointIdentities&) { return identities; });
}

void MIDIManagedConnection::removeAllCriteria() {
  removeCriteria([](const MIDIEndpointIdentities& present) { return present; });
}

template <std::invocable<const MIDIEndpointIdentities&> Choice>
void MIDIManagedConnection::removeCriteria(const Choice& choice) {
  const auto manager = midiManager();
  const auto owned = ownedIDs(manager.get());
  const auto locked = lock();
  const MIDIEndpointIdentities removed = choice(criteria_);
  auto criteria = criteria_;
  for (const auto& identity : removed) {
    criteria.erase(identity);
  }
  update(std::move(criteria), owned);
  if (manager) {
    letGo(located(*manager, removed));
    droppingErrors([&] { refresh(*manager, criteria_); });
  }
}

MIDIManagedConnection::References MIDIManagedConnection::located(
    const MIDIManager& manager, const MIDIEndpointIdentities& identities) const {
  const auto endpoints = manager.endpoints();
  return settings_.kind == MIDIEndpointType::output ? locatedIn(endpoints.outputs, identities)
                                                    : locatedIn(endpoints.inputs, identities);
}

std::set<std::int32_t> MIDIManagedConnection::ownedIDs(const MIDIManager* manager) const {
  return manager != nullptr && settings_.filter.owned ? manager->ownedUniqueIDs(settings_.kind)
                                                      : std::set<std::int32_t>();
}

void MIDIManagedConnection::update(MIDIEndpointIdentities criteria, const std::set<std::int32_t>& owned) {
  for (const auto uniqueID : owned) {
    criteria.erase(MIDIEndpointIdentity::uniqueID(uniqueID));
  }
  for (const auto& identity : settings_.filter.criteria) {
    criteria.erase(identity);
  }
  criteria_ = std::move(criteria);
}

MIDIEndpointIdentities MIDIManagedConnection::joining(const MIDIIORawNotification& change) const {
  const auto* added = std::get_if<MIDIIORawNotification::Added>(&change.asCase());
  if (added == nullptr || settings_.matching) {
    return {};
  }
  const auto kind = settings_.kind == MIDIEndpointType::output ? MIDIIOObjectType::outputEndpoint
                                                               : MIDIIOObjectType::inputEndpoint;
  const auto object = objectFor(service(), added->child, added->childType);
  return object && object->objectType() == kind
             ? MIDIEndpointIdentities{MIDIEndpointIdentity::uniqueID(object->uniqueID())}
             : MIDIEndpointIdentities();
}

std::string description(const std::set<MIDIObjectRef>& references) {
  return internals::listText(references, [](MIDIObjectRef reference) { return std::to_string(reference); });
}

std::string description(const std::optional<MIDIObjectRef>& reference) {
  return reference ? std::to_string(*reference) : "nil";
}

}  // namespace midikit::io::internal
