#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "MIDIKitIO/manager/MIDIManager.hpp"

namespace midikit::io {

/// Says what happens to it: "a is made", "a follows", "a goes".
using Story = std::function<void(const std::string&)>;

class FakeEndpoint final : public MIDIManagedEndpoint {
 public:
  FakeEndpoint(const std::shared_ptr<MIDIManager>& manager, std::string name, Story story,
               std::optional<std::int32_t> uniqueID = std::nullopt,
               CoreMIDIAPIVersion api = CoreMIDIAPIVersion::legacyCoreMIDI())
      : MIDIManagedEndpoint(manager, api),
        name_(std::move(name)),
        story_(std::move(story)),
        uniqueID_(uniqueID) {}
  ~FakeEndpoint() override { story_(name_ + (midiManager() ? " goes" : " goes after the manager")); }

  std::optional<std::int32_t> uniqueID() const override { return uniqueID_; }

 private:
  std::string name_;
  Story story_;
  std::optional<std::int32_t> uniqueID_;
};

class FakeConnection final : public MIDIManagedConnection {
 public:
  FakeConnection(const std::shared_ptr<MIDIManager>& manager, std::string name, Story story)
      : MIDIManagedConnection(manager, CoreMIDIAPIVersion::legacyCoreMIDI()),
        name_(std::move(name)),
        story_(std::move(story)) {}
  ~FakeConnection() override { story_(name_ + (midiManager() ? " goes" : " goes after the manager")); }

  void follow(const MIDIIORawNotification& change) override {
    story_(name_ + " follows " + std::to_string(change.asCase().index()) + " at " +
           std::to_string(midiManager()->devices().devices.size()) + " devices");
    throw core::MIDIIOError::connectionError("of no interest");
  }

 private:
  std::string name_;
  Story story_;
};

/// A manager that takes objects from outside.
class HoldingManager final : public MIDIManager {
 public:
  static std::shared_ptr<HoldingManager> create(MIDIManagerSettings settings) {
    const std::shared_ptr<HoldingManager> manager(new HoldingManager(std::move(settings)));
    manager->adopt();
    return manager;
  }

  template <class Map>
  void put(Map ManagedObjects::Maps::* map, const std::string& tag, typename Map::mapped_type object) {
    onEventQueue([&] { managedObjects().put(map, tag, std::move(object)); });
  }

 private:
  using MIDIManager::MIDIManager;
};

}  // namespace midikit::io
