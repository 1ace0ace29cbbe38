#include "rig/midi/VirtualMidiService.hpp"

#include <utility>

#include "rig/midi/MidiNotifications.hpp"
#include "rig/midi/MidiStatus.hpp"

// The equipment's side, clients, the tree and the properties. What has to do with lists is in
// VirtualMidiServiceRouting.cpp.

namespace karvex::rig {

using namespace midikit::io;

namespace {

MIDIObjectRef at(const std::vector<MIDIObjectRef>& list, std::size_t index) {
  return index < list.size() ? list[index] : 0;
}

void closeAll(const std::vector<MidiRouting::Receiver>& receivers) {
  for (const auto& receiver : receivers) {
    if (receiver != nullptr) {
      receiver->close();
    }
  }
}

}  // namespace

VirtualMidiService::VirtualMidiService(foundation::Runtime& runtime, PlatformVersion version,
                                       std::shared_ptr<ThruConnectionStore> store)
    : runtime_(runtime),
      version_(version),
      setup_(references_, hasProtocols()),
      clients_(runtime),
      thru_(references_, setup_, std::move(store)),
      equipmentQueue_(runtime.globalQueue()) {}

VirtualMidiService::~VirtualMidiService() {
  // While all of the service is still there: a block that is under way may be using it.
  std::vector<MidiRouting::Receiver> receivers;
  {
    const std::lock_guard lock(mutex_);
    receivers = routing_.receivers();
  }
  closeAll(receivers);
  clients_.close();
}

MIDIObjectRef VirtualMidiService::addDevice(const DeviceDescription& description) {
  const std::lock_guard lock(mutex_);
  const Ref device = setup_.addDevice(description);
  clients_.notify(addedMessages(setup_, device));
  return device;
}

bool VirtualMidiService::removeDevice(Ref device) {
  std::vector<MidiRouting::Receiver> receivers;
  {
    const std::lock_guard lock(mutex_);
    const auto* found = setup_.find(device);
    if (found == nullptr || found->kind != MidiObjectKind::device) {
      return false;
    }
    const auto messages = removedMessages(setup_, device);
    for (const Ref object : setup_.subtree(device)) {
      receivers.push_back(routing_.removeEndpoint(object));
    }
    setup_.remove(device);
    clients_.notify(messages);
  }
  closeAll(receivers);
  return true;
}

OSStatus VirtualMidiService::setProperty(Ref object, std::string_view key, PropertyValue value) {
  const std::lock_guard lock(mutex_);
  return tellChange(setup_.setProperty(object, key, std::move(value)), object, key);
}

OSStatus VirtualMidiService::setPropertyThroughout(Ref object, std::string_view key,
                                                   const PropertyValue& value) {
  const std::lock_guard lock(mutex_);
  const OSStatus result = setup_.setProperty(object, key, value);
  if (result != noErr) {
    return result;
  }
  for (const Ref below : setup_.subtree(object)) {
    setup_.setProperty(below, key, value);
  }
  clients_.notify({propertyChangedMessage(*setup_.find(object), key), setupChangedMessage()});
  return noErr;
}

OSStatus VirtualMidiService::removeProperty(Ref object, std::string_view key) {
  const std::lock_guard lock(mutex_);
  return tellChange(setup_.removeProperty(object, key), object, key);
}

OSStatus VirtualMidiService::answerWithNone(Ref object, std::string_view key) {
  const std::lock_guard lock(mutex_);
  return setup_.answerWithNone(object, key);
}

void VirtualMidiService::notify(const MIDINotification& message) {
  const std::lock_guard lock(mutex_);
  clients_.notify({message});
}

std::vector<std::string> VirtualMidiService::clientNames() const {
  const std::lock_guard lock(mutex_);
  return clients_.names();
}

OSStatus VirtualMidiService::tellChange(OSStatus result, Ref object, std::string_view key) {
  if (result == noErr) {
    clients_.notify({propertyChangedMessage(*setup_.find(object), key)});
  }
  return result;
}

std::uint64_t VirtualMidiService::machAbsoluteTime() const {
  return static_cast<std::uint64_t>(runtime_.clock().now().time_since_epoch().count());
}

OSStatus VirtualMidiService::MIDIClientCreateWithBlock(const std::string& name, Ref& outClient,
                                                       MIDINotifyBlock block) {
  return perform(MidiOperation::clientCreateWithBlock, 0, [&] {
    outClient = references_.next();
    clients_.add(outClient, name, std::move(block));
    return noErr;
  });
}

std::size_t VirtualMidiService::MIDIGetNumberOfDevices() const {
  return look(MidiOperation::getNumberOfDevices, 0, [&] { return setup_.devices().size(); });
}
MIDIObjectRef VirtualMidiService::MIDIGetDevice(std::size_t index) const {
  return look(MidiOperation::getDevice, 0, [&] { return at(setup_.devices(), index); });
}
std::size_t VirtualMidiService::MIDIGetNumberOfSources() const {
  return look(MidiOperation::getNumberOfSources, 0, [&] { return setup_.sources().size(); });
}
MIDIObjectRef VirtualMidiService::MIDIGetSource(std::size_t index) const {
  return look(MidiOperation::getSource, 0, [&] { return at(setup_.sources(), index); });
}
std::size_t VirtualMidiService::MIDIGetNumberOfDestinations() const {
  return look(MidiOperation::getNumberOfDestinations, 0, [&] { return setup_.destinations().size(); });
}
MIDIObjectRef VirtualMidiService::MIDIGetDestination(std::size_t index) const {
  return look(MidiOperation::getDestination, 0, [&] { return at(setup_.destinations(), index); });
}

std::size_t VirtualMidiService::countChildren(MidiOperation operation, Ref parent, Children list) const {
  return look(operation, parent, [&] {
    const auto* found = setup_.find(parent);
    return found != nullptr ? (found->*list).size() : 0;
  });
}

MIDIObjectRef VirtualMidiService::child(MidiOperation operation, Ref parent, Children list,
                                        std::size_t index) const {
  return look(operation, parent, [&] {
    const auto* found = setup_.find(parent);
    return found != nullptr ? at(found->*list, index) : 0;
  });
}

std::size_t VirtualMidiService::MIDIDeviceGetNumberOfEntities(Ref device) const {
  return countChildren(MidiOperation::deviceGetNumberOfEntities, device, &MidiObject::entities);
}
MIDIObjectRef VirtualMidiService::MIDIDeviceGetEntity(Ref device, std::size_t index) const {
  return child(MidiOperation::deviceGetEntity, device, &MidiObject::entities, index);
}
std::size_t VirtualMidiService::MIDIEntityGetNumberOfSources(Ref entity) const {
  return countChildren(MidiOperation::entityGetNumberOfSources, entity, &MidiObject::sources);
}
MIDIObjectRef VirtualMidiService::MIDIEntityGetSource(Ref entity, std::size_t index) const {
  return child(MidiOperation::entityGetSource, entity, &MidiObject::sources, index);
}
std::size_t VirtualMidiService::MIDIEntityGetNumberOfDestinations(Ref entity) const {
  return countChildren(MidiOperation::entityGetNumberOfDestinations, entity, &MidiObject::destinations);
}
MIDIObjectRef VirtualMidiService::MIDIEntityGetDestination(Ref entity, std::size_t index) const {
  return child(MidiOperation::entityGetDestination, entity, &MidiObject::destinations, index);
}

OSStatus VirtualMidiService::MIDIEntityGetDevice(Ref entity, Ref& outDevice) const {
  return perform(MidiOperation::entityGetDevice, entity, [&] {
    const auto* found = setup_.find(entity);
    if (found == nullptr || found->kind != MidiObjectKind::entity) {
      return status::objectNotFound;
    }
    outDevice = found->parent;
    return noErr;
  });
}

OSStatus VirtualMidiService::MIDIEndpointGetEntity(Ref endpoint, Ref& outEntity) const {
  return perform(MidiOperation::endpointGetEntity, endpoint, [&] {
    const auto* found = setup_.find(endpoint);
    if (found == nullptr || !found->isEndpoint()) {
      return status::objectNotFound;
    }
    outEntity = found->parent;
    return noErr;
  });
}

OSStatus VirtualMidiService::MIDIObjectGetStringProperty(Ref object, std::string_view key,
                                                         std::optional<std::string>& out) const {
  return perform(MidiOperation::objectGetStringProperty, object,
                 [&] { return setup_.stringProperty(object, key, out); });
}

OSStatus VirtualMidiService::MIDIObjectGetIntegerProperty(Ref object, std::string_view key,
                                                          std::int32_t& out) const {
  return perform(MidiOperation::objectGetIntegerProperty, object,
                 [&] { return setup_.integerProperty(object, key, out); });
}

OSStatus VirtualMidiService::MIDIObjectGetDictionaryProperty(Ref object, std::string_view key,
                                                             std::optional<PropertyDictionary>& out) const {
  return perform(MidiOperation::objectGetDictionaryProperty, object,
                 [&] { return setup_.dictionaryProperty(object, key, out); });
}

OSStatus VirtualMidiService::MIDIObjectGetProperties(Ref object, PropertyDictionary& out, bool deep) const {
  return perform(MidiOperation::objectGetProperties, object,
                 [&] { return setup_.properties(object, out, deep); });
}

OSStatus VirtualMidiService::MIDIObjectSetStringProperty(Ref object, std::string_view key,
                                                         std::string_view value) {
  return perform(MidiOperation::objectSetStringProperty, object,
                 [&] { return tellChange(setup_.setStringProperty(object, key, value), object, key); });
}

OSStatus VirtualMidiService::MIDIObjectSetIntegerProperty(Ref object, std::string_view key,
                                                          std::int32_t value) {
  return perform(MidiOperation::objectSetIntegerProperty, object,
                 [&] { return tellChange(setup_.setIntegerProperty(object, key, value), object, key); });
}

}  // namespace karvex::rig
