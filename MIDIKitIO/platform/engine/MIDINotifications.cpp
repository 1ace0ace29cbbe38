#include "MIDIKitIO/platform/engine/MIDINotifications.hpp"

#include <algorithm>

namespace midikit::io::engine {

namespace {

constexpr std::int32_t setupChanged = 1;
constexpr std::int32_t objectAdded = 2;
constexpr std::int32_t objectRemoved = 3;
constexpr std::int32_t propertyChanged = 4;
constexpr std::int32_t thruConnectionsChanged = 5;

/// The type code of no object.
constexpr std::int32_t noObject = -1;

MIDINotification childMessage(std::int32_t messageID, const MIDISetup& setup, MIDIObjectRef child) {
  const MIDIObject& object = *setup.find(child);
  const MIDIObject* parent = setup.find(object.parent);
  return {messageID, MIDINotification::Child{
                         .parent = object.parent,
                         .parentType = parent != nullptr ? static_cast<std::int32_t>(parent->kind) : noObject,
                         .child = child,
                         .childType = static_cast<std::int32_t>(object.kind),
                     }};
}

std::vector<MIDINotification> childMessages(std::int32_t messageID, const MIDISetup& setup,
                                            const std::vector<MIDIObjectRef>& objects) {
  std::vector<MIDINotification> messages;
  messages.reserve(objects.size());
  for (const MIDIObjectRef object : objects) {
    messages.push_back(childMessage(messageID, setup, object));
  }
  return messages;
}

}  // namespace

MIDINotification setupChangedMessage() {
  return {.messageID = setupChanged};
}

MIDINotification propertyChangedMessage(const MIDIObject& object, std::string_view key) {
  return {propertyChanged, MIDINotification::Property{.object = object.ref,
                                                      .objectType = static_cast<std::int32_t>(object.kind),
                                                      .propertyName = std::string(key)}};
}

MIDINotification thruConnectionChangedMessage() {
  return {.messageID = thruConnectionsChanged};
}

std::vector<MIDINotification> addedMessages(const MIDISetup& setup, MIDIObjectRef object) {
  return childMessages(objectAdded, setup, setup.subtree(object));
}

std::vector<MIDINotification> removedMessages(const MIDISetup& setup, MIDIObjectRef object) {
  auto objects = setup.subtree(object);
  std::reverse(objects.begin(), objects.end());
  return childMessages(objectRemoved, setup, objects);
}

}  // namespace midikit::io::engine
