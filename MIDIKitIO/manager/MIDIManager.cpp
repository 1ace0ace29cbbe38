#include "MIDIKitIO/manager/MIDIManager.hpp"

#include <string_view>
#include <variant>

#include "MIDIKitCore/MIDIIOError.hpp"
#include "MIDIKitInternals/Text.hpp"
#include "foundation/text/Uuid.hpp"

namespace midikit::io {
namespace {

using karvex::foundation::SerialQueue;

/// Labels must stay the same from version to version: people look for them.
constexpr std::string_view labelPrefix = "org.karvex.midiManager.";

std::string queueLabel(const std::string& clientName) {
  auto name = internals::onlyAlphanumerics(clientName);
  if (name.empty()) {
    name = karvex::foundation::Uuid::random().text();
  }
  return std::string(labelPrefix) + name + ".events";
}

}  // namespace

std::shared_ptr<MIDIManager> MIDIManager::create(MIDIManagerSettings settings,
                                                 NotificationHandler notificationHandler) {
  const std::shared_ptr<MIDIManager> manager(new MIDIManager(std::move(settings)));
  manager->setNotificationHandler(std::move(notificationHandler));
  manager->adopt();
  return manager;
}

MIDIManager::MIDIManager(MIDIManagerSettings settings)
    : settings_(std::move(settings)),
      eventQueue_(
          std::make_shared<SerialQueue>(settings_.runtime.globalQueue(), queueLabel(settings_.clientName))),
      state_({.preferredAPI = CoreMIDIAPIVersion::bestFor(settings_.service->platformVersion())}),
      managed_(settings_.runtime) {}

void MIDIManager::adopt() {
  state_.modify([this](State& state) { state.endpoints.manager = weak_from_this(); });
}

void MIDIManager::start() {
  onEventQueue([this] {
    if (coreMIDIClientRef() != 0) {
      return;
    }
    MIDIObjectRef client = 0;
    core::checkStatus(settings_.service->MIDIClientCreateWithBlock(
        settings_.clientName, client, [weak = weak_from_this()](const MIDINotification& message) {
          if (const auto manager = weak.lock()) {
            manager->handle(message);
          }
        }));
    state_.modify([client](State& state) { state.clientRef = client; });
    refreshObjects();
  });
}

void MIDIManager::refreshObjects() {
  const auto devicesWalk = beginWalk();
  MIDIDevices devices;
  devices.refresh(*settings_.service);
  state_.modify([&](State& state) {
    if (state.devicesWalk < devicesWalk) {
      state.devicesWalk = devicesWalk;
      state.devices = std::move(devices);
    }
  });
  const auto endpointsWalk = beginWalk();
  MIDIEndpoints endpoints{.manager = weak_from_this()};
  endpoints.refresh(*settings_.service);
  state_.modify([&](State& state) {
    if (state.endpointsWalk < endpointsWalk) {
      state.endpointsWalk = endpointsWalk;
      state.endpoints = std::move(endpoints);
    }
  });
}

/// One message of the platform, on its thread. What the handler can read of this manager has to be up to date
/// before the handler is queued, while removed objects are looked up in what was there before.
void MIDIManager::handle(const MIDINotification& message) noexcept {
  const MIDIIORawNotification raw(message);
  const bool isRemoval = std::holds_alternative<MIDIIORawNotification::Removed>(raw.asCase());
  const auto before = objects();
  if (raw.concernsObjects()) {
    refreshObjects();
  }
  const auto cache = state_.modify([&](State& state) {
    // One removal often brings others with it, which have to find the objects that were there before all.
    if (!isRemoval) {
      state.notificationCache = before;
    }
    return state.notificationCache;
  });
  if (auto notification = MIDIIONotification::from(raw, *settings_.service, cache.get())) {
    send(*std::move(notification));
  }
  managed_.follow(raw);
}

std::shared_ptr<const MIDIIOObjectCache> MIDIManager::objects() const {
  return state_.modify([](const State& state) {
    return std::make_shared<const MIDIIOObjectCache>(
        MIDIIOObjectCache{state.devices.devices, state.endpoints.inputs, state.endpoints.outputs});
  });
}

void MIDIManager::send(MIDIIONotification notification) {
  if (auto handler = notificationHandler()) {
    settings_.runtime.mainQueue().post([handler = std::move(handler), notification = std::move(notification),
                                        manager = shared_from_this()] { handler(notification, *manager); });
  }
}

MIDIObjectRef MIDIManager::coreMIDIClientRef() const {
  return state_.modify([](const State& state) { return state.clientRef; });
}

CoreMIDIAPIVersion MIDIManager::preferredAPI() const {
  return state_.modify([](const State& state) { return state.preferredAPI; });
}

void MIDIManager::setPreferredAPI(CoreMIDIAPIVersion api) {
  const auto valid = api.validOn(settings_.service->platformVersion());
  state_.modify([valid](State& state) { state.preferredAPI = valid; });
}

MIDIDevices MIDIManager::devices() const {
  return state_.modify([](const State& state) { return state.devices; });
}

MIDIEndpoints MIDIManager::endpoints() const {
  return state_.modify([](const State& state) { return state.endpoints; });
}

MIDIManager::NotificationHandler MIDIManager::notificationHandler() const {
  return state_.modify([](const State& state) { return state.notificationHandler; });
}

void MIDIManager::setNotificationHandler(NotificationHandler handler) {
  // The old one ends after the lock: what it holds may well use the manager on its way.
  state_.modify([&handler](State& state) { std::swap(state.notificationHandler, handler); });
}

std::optional<MIDIIOObjectCache> MIDIManager::notificationCache() const {
  const auto cache = state_.modify([](const State& state) { return state.notificationCache; });
  return cache ? std::optional(*cache) : std::nullopt;
}

}  // namespace midikit::io
