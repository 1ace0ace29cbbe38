#include "MIDIKitIO/platform/engine/SetupEditor.hpp"

#include <utility>

#include "MIDIKitIO/platform/engine/MIDINotifications.hpp"

namespace midikit::io::engine {

MIDIObjectRef SetupEditor::addDevice(const DeviceDescription& description) {
  const Ref device = setup_.addDevice(description);
  tellAdded(device);
  return device;
}

MIDIObjectRef SetupEditor::addEntity(Ref device, const EntityDescription& description,
                                     const PropertyDictionary& shared) {
  const Ref entity = setup_.addEntity(device, description, shared);
  tellAdded(entity);
  return entity;
}

MIDIObjectRef SetupEditor::addForeignEndpoint(MIDIObjectKind kind, const EndpointDescription& description) {
  const Ref endpoint = setup_.addForeignEndpoint(kind, description);
  tellAdded(endpoint);
  return endpoint;
}

void SetupEditor::tellAdded(Ref object) {
  const auto added = addedMessages(setup_, object);
  messages_.insert(messages_.end(), added.begin(), added.end());
  isSetupChanged_ = true;
}

void SetupEditor::setReader(Ref destination, MIDIRouting::Receiver reader) {
  removed_.push_back(routing_.setReader(destination, std::move(reader)));
  std::erase(removed_, nullptr);
}

void SetupEditor::remove(Ref object) {
  if (setup_.find(object) == nullptr) {
    return;
  }
  const auto gone = removedMessages(setup_, object);
  messages_.insert(messages_.end(), gone.begin(), gone.end());
  for (const Ref below : setup_.subtree(object)) {
    removed_.push_back(routing_.removeEndpoint(below));
  }
  std::erase(removed_, nullptr);
  setup_.remove(object);
  isSetupChanged_ = true;
}

OSStatus SetupEditor::setProperty(Ref object, std::string_view key, const PropertyValue& value) {
  const OSStatus result = setup_.setProperty(object, key, value);
  if (result == noErr) {
    messages_.push_back(propertyChangedMessage(*setup_.find(object), key));
  }
  return result;
}

OSStatus SetupEditor::setPropertyThroughout(Ref object, std::string_view key, const PropertyValue& value) {
  const OSStatus result = setProperty(object, key, value);
  if (result != noErr) {
    return result;
  }
  for (const Ref below : setup_.subtree(object)) {
    setup_.setProperty(below, key, value);
  }
  isSetupChanged_ = true;
  return noErr;
}

std::vector<MIDINotification> SetupEditor::messages() const {
  auto all = messages_;
  if (isSetupChanged_) {
    all.push_back(setupChangedMessage());
  }
  return all;
}

}  // namespace midikit::io::engine
