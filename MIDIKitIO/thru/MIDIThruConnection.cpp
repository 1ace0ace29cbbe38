#include "MIDIKitIO/thru/MIDIThruConnection.hpp"

#include <algorithm>
#include <cstdint>
#include <span>

#include "MIDIKitCore/MIDIIOError.hpp"
#include "MIDIKitIO/manager/MIDIManager.hpp"
#include "MIDIKitIO/platform/MIDIThruConnectionParams.hpp"
#include "MIDIKitIO/thru/MIDIThruConnectionProxy.hpp"
#include "MIDIKitInternals/Text.hpp"

namespace midikit::io {
namespace {

constexpr auto maximumEndpoints = MIDIThruConnectionParams::maximumEndpoints;

template <class Endpoint>
std::vector<Endpoint> firstOf(std::vector<Endpoint> endpoints) {
  endpoints.resize(std::min(endpoints.size(), maximumEndpoints));
  return endpoints;
}

/// Whether the platform's own thru connections can't be relied on.
bool hasThruFault(PlatformVersion platform) {
  constexpr PlatformVersion first{.major = 11, .minor = 0};
  constexpr PlatformVersion mended{.major = 13, .minor = 0};
  return platform >= first && platform < mended;
}

template <class Endpoint>
std::uint32_t writeEndpoints(const std::vector<Endpoint>& endpoints,
                             std::array<MIDIThruConnectionEndpoint, maximumEndpoints>& out) {
  std::ranges::transform(endpoints, out.begin(), [](const Endpoint& endpoint) {
    return MIDIThruConnectionEndpoint{endpoint.coreMIDIObjectRef, endpoint.uniqueID};
  });
  return static_cast<std::uint32_t>(endpoints.size());
}

template <class Endpoint>
std::string textOf(const std::vector<Endpoint>& endpoints) {
  return internals::listText(endpoints, [](const Endpoint& endpoint) { return endpoint.debugText(); });
}

}  // namespace

MIDIThruConnection::MIDIThruConnection(const std::shared_ptr<MIDIManager>& manager,
                                       MIDIThruConnectionSettings settings)
    : MIDIManaged(manager, manager->preferredAPI()),
      outputs_(firstOf(std::move(settings.outputs))),
      inputs_(firstOf(std::move(settings.inputs))),
      lifecycle_(std::move(settings.lifecycle)),
      parameters_(settings.parameters) {}

void MIDIThruConnection::create() {
  const auto made = makePlatform();
  const bool isDisposed = platform_.modify([&made](Platform& platform) {
    if (!platform.isDisposed) {
      platform = made;
    }
    return platform.isDisposed;
  });
  if (isDisposed) {
    free(made);
  }
}

MIDIThruConnection::Platform MIDIThruConnection::makePlatform() const {
  if (!hasThruFault(service().platformVersion())) {
    return {.reference = makeConnection()};
  }
  if (lifecycle_.ownerID()) {
    throw core::MIDIIOError::notSupported(
        "Persistent MIDI Thru Connections cannot be created on macOS 11 & 12 and iOS 14 & 15 due to a Core "
        "MIDI bug. Consider using a non-persistent thru connection instead.");
  }
  return {.reference = 0,
          .proxy = MIDIThruConnectionProxy::create(midiManager(), api(), identitiesOf(outputs_),
                                                   identitiesOf(inputs_))};
}

MIDIObjectRef MIDIThruConnection::makeConnection() const {
  MIDIThruConnectionParams record;
  service().MIDIThruConnectionParamsInitialize(record);
  record.numSources = writeEndpoints(outputs_, record.sources);
  record.numDestinations = writeEndpoints(inputs_, record.destinations);
  record.filterOutAllControls = static_cast<std::uint8_t>(parameters_.filterOutAllControls);
  record.filterOutBeatClock = static_cast<std::uint8_t>(parameters_.filterOutBeatClock);
  record.filterOutMTC = static_cast<std::uint8_t>(parameters_.filterOutMTC);
  record.filterOutSysEx = static_cast<std::uint8_t>(parameters_.filterOutSysEx);
  record.filterOutTuneRequest = static_cast<std::uint8_t>(parameters_.filterOutTuneRequest);
  const std::span bytes(reinterpret_cast<const std::uint8_t*>(&record), sizeof(record));
  MIDIObjectRef connection = 0;
  core::checkStatus(service().MIDIThruConnectionCreate(lifecycle_.ownerID(), bytes, connection));
  return connection;
}

void MIDIThruConnection::follow(const MIDIIORawNotification& change) const noexcept {
  if (const auto standIn = proxy()) {
    standIn->follow(change);
  }
}

void MIDIThruConnection::dispose() noexcept {
  free(platform_.modify(
      [](Platform& platform) { return std::exchange(platform, Platform{.isDisposed = true}); }));
}

void MIDIThruConnection::free(const Platform& platform) const {
  if (lifecycle_.ownerID()) {
    return;
  }
  if (platform.proxy) {
    platform.proxy->dispose();
  }
  if (platform.reference) {
    service().MIDIThruConnectionDispose(*platform.reference);
  }
}

std::string MIDIThruConnection::description() const {
  const auto reference = coreMIDIThruConnectionRef();
  return "MIDIThruConnection(ref: " + (reference ? std::to_string(*reference) : "nil") +
         ", outputs: " + textOf(outputs_) + ", inputs: " + textOf(inputs_) + ", " + lifecycle_.description() +
         ")";
}

}  // namespace midikit::io
