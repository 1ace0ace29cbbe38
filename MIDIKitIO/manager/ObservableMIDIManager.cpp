#include "MIDIKitIO/manager/ObservableMIDIManager.hpp"

#include <utility>

namespace midikit::io {

std::shared_ptr<ObservableMIDIManager> ObservableMIDIManager::create(
    MIDIManagerSettings settings, NotificationHandler notificationHandler) {
  const std::shared_ptr<ObservableMIDIManager> manager(new ObservableMIDIManager(std::move(settings)));
  manager->setNotificationHandler(std::move(notificationHandler));
  manager->adopt();
  return manager;
}

void ObservableMIDIManager::adopt() {
  MIDIManager::adopt();
  observableEndpoints.update([this](MIDIEndpoints& endpoints) { endpoints.manager = weak_from_this(); });
}

void ObservableMIDIManager::refreshObjects() {
  MIDIManager::refreshObjects();
  const auto devicesWalk = beginWalk();
  MIDIDevices devices;
  devices.refresh(*service());
  observableDevices.update([&](MIDIDevices& current) {
    if (devicesWalk_ < devicesWalk) {
      devicesWalk_ = devicesWalk;
      current = std::move(devices);
    }
  });
  const auto endpointsWalk = beginWalk();
  MIDIEndpoints endpoints{.manager = weak_from_this()};
  endpoints.refresh(*service());
  observableEndpoints.update([&](MIDIEndpoints& current) {
    if (endpointsWalk_ < endpointsWalk) {
      endpointsWalk_ = endpointsWalk;
      current = std::move(endpoints);
    }
  });
}

void ObservableMIDIManager::setNotificationHandler(NotificationHandler handler) {
  if (!handler) {
    return MIDIManager::setNotificationHandler(nullptr);
  }
  MIDIManager::setNotificationHandler(
      [handler = std::move(handler)](const MIDIIONotification& notification, MIDIManager& manager) {
        if (auto* observable = dynamic_cast<ObservableMIDIManager*>(&manager)) {
          handler(notification, *observable);
        }
      });
}

}  // namespace midikit::io
