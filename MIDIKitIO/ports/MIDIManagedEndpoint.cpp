#include "MIDIKitIO/ports/MIDIManagedEndpoint.hpp"

#include <utility>

#include "MIDIKitCore/MIDIIOError.hpp"
#include "MIDIKitIO/manager/MIDIManager.hpp"
#include "MIDIKitIO/objects/PropertyAccess.hpp"
#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"
#include "MIDIKitInternals/Text.hpp"

namespace midikit::io::internal {

MIDIManagedEndpoint::MIDIManagedEndpoint(const std::shared_ptr<MIDIManager>& manager, Description description)
    : MIDIManaged(manager, manager->preferredAPI()),
      state_({.name = std::move(description.name), .uniqueID = description.uniqueID}) {}

void MIDIManagedEndpoint::setName(std::string name) {
  const auto endpoint = state_.modify([&name](State& state) {
    state.name = name;
    return state.reference;
  });
  if (endpoint) {
    static_cast<void>(service().MIDIObjectSetStringProperty(*endpoint, kMIDIPropertyName, name));
  }
}

void MIDIManagedEndpoint::setPrivate(bool isPrivate) {
  core::checkStatus(service().MIDIObjectSetIntegerProperty(reference().value_or(0), kMIDIPropertyPrivate,
                                                           isPrivate ? 1 : 0));
}

void MIDIManagedEndpoint::create(const MIDIManager& manager) {
  auto wanted = uniqueID();
  if (wanted && isTaken(*wanted)) {
    wanted = std::nullopt;
    setUniqueID(std::nullopt);
  }
  MIDIObjectRef endpoint = 0;
  auto written = name();
  core::checkStatus(makeEndpoint(manager, endpoint));
  if (!adopt(endpoint)) {
    service().MIDIEndpointDispose(endpoint);
    return setUniqueID(std::nullopt);
  }
  while (written != name()) {  // Renamed meanwhile.
    written = name();
    static_cast<void>(service().MIDIObjectSetStringProperty(endpoint, kMIDIPropertyName, written));
  }
  static_cast<void>(service().MIDIObjectSetStringProperty(endpoint, kMIDIPropertyModel, manager.model()));
  static_cast<void>(
      service().MIDIObjectSetStringProperty(endpoint, kMIDIPropertyManufacturer, manager.manufacturer()));
  if (wanted) {
    core::checkStatus(service().MIDIObjectSetIntegerProperty(endpoint, kMIDIPropertyUniqueID, *wanted));
  } else {
    setUniqueID(integerProperty(service(), endpoint, kMIDIPropertyUniqueID));
  }
}

void MIDIManagedEndpoint::dispose() noexcept {
  const auto leavePlatform = [this] {
    const auto endpoint = state_.modify([](State& state) {
      state.isDisposed = true;
      return std::exchange(state.reference, std::nullopt);
    });
    if (endpoint) {
      service().MIDIEndpointDispose(*endpoint);
    }
  };
  if (const auto manager = midiManager()) {
    manager->ownership().change(leavePlatform);
  } else {
    leavePlatform();
  }
}

std::string MIDIManagedEndpoint::descriptionAs(const char* className) const {
  const auto state = state_.value();
  return std::string(className) + "(name: " + internals::quoted(state.name) +
         ", uniqueID: " + (state.uniqueID ? std::to_string(*state.uniqueID) : "nil") + ")";
}

bool MIDIManagedEndpoint::adopt(MIDIObjectRef endpoint) {
  return state_.modify([endpoint](State& state) {
    if (!state.isDisposed) {
      state.reference = endpoint;
    }
    return !state.isDisposed;
  });
}

void MIDIManagedEndpoint::setUniqueID(std::optional<std::int32_t> uniqueID) {
  state_.modify([uniqueID](State& state) { state.uniqueID = uniqueID; });
}

}  // namespace midikit::io::internal
