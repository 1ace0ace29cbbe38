#include "rig/midi/MidiNotifications.hpp"

#include <algorithm>

namespace karvex::rig {

using namespace midikit::io;

namespace {

constexpr std::int32_t setupChanged = 1;
constexpr std::int32_t objectAdded = 2;
constexpr std::int32_t objectRemoved = 3;
constexpr std::int32_t propertyChanged = 4;
constexpr std::int32_t thruConnectionsChanged = 5;

/// The type code of no object.
constexpr std::int32_t noObject = -1;

MIDINotification childMessage(std::int32_t messageID, const MidiSetup& setup, MIDIObjectRef child) {
  const MidiObject& object = *setup.find(child);
  const MidiObject* parent = setup.find(object.parent);
  return {messageID, MIDINotification::Child{
                         .parent = object.parent,
                         .parentType = parent != nullptr ? static_cast<std::int32_t>(parent->kind) : noObject,
                         .child = child,
                         .childType = static_cast<std::int32_t>(object.kind),
                     }};
}

std::vector<MIDINotification> childMessages(std::int32_t messageID, const MidiSetup& setup,
                                            const std::vector<MIDIObjectRef>& objects) {
  std::vector<MIDINotification> messages;
  messages.reserve(objects.size() + 1);
  for (const MIDIObjectRef object : objects) {
    messages.push_back(childMessage(messageID, setup, object));
  }
  messages.push_back(setupChangedMessage());
  return messages;
}

}  // namespace

MIDINotification setupChangedMessage() {
  return {.messageID = setupChanged};
}

MIDINotification propertyChangedMessage(const MidiObject& object, std::string_view key) {
  return {propertyChanged, MIDINotification::Property{.object = object.ref,
                                                      .objectType = static_cast<std::int32_t>(object.kind),
                                                      .propertyName = std::string(key)}};
}

MIDINotification thruConnectionChangedMessage() {
  return {.messageID = thruConnectionsChanged};
}

std::vector<MIDINotification> addedMessages(const MidiSetup& setup, MIDIObjectRef object) {
  return childMessages(objectAdded, setup, setup.subtree(object));
}

std::vector<MIDINotification> removedMessages(const MidiSetup& setup, MIDIObjectRef object) {
  auto objects = setup.subtree(object);
  std::reverse(objects.begin(), objects.end());
  return childMessages(objectRemoved, setup, objects);
}

}  // namespace karvex::rig
