#include "MIDIKitIO/platform/engine/MIDIServiceEngine.hpp"

#include <utility>

#include "MIDIKitIO/platform/engine/MIDINotifications.hpp"
#include "MIDIKitIO/platform/engine/MIDIStatus.hpp"

// The equipment's side, clients, the tree and the properties. What has to do with lists is in
// MIDIServiceEngineRouting.cpp.

namespace midikit::io::engine {

namespace {

MIDIObjectRef at(const std::vector<MIDIObjectRef>& list, std::size_t index) {
  return index < list.size() ? list[index] : 0;
}

void closeAll(const std::vector<MIDIRouting::Receiver>& receivers) {
  for (const auto& receiver : receivers) {
    if (receiver != nullptr) {
      receiver->close();
    }
  }
}

}  // namespace

MIDIServiceEngine::MIDIServiceEngine(karvex::foundation::Runtime& runtime, PlatformVersion version,
                                     std::shared_ptr<ThruConnectionStore> store)
    : runtime_(runtime),
      version_(version),
      setup_(references_, hasProtocols()),
      clients_(runtime),
      thru_(references_, setup_, std::move(store)) {}

MIDIServiceEngine::~MIDIServiceEngine() {
  close();
}

void MIDIServiceEngine::close() {
  std::vector<MIDIRouting::Receiver> receivers;
  {
    const std::lock_guard lock(mutex_);
    receivers = routing_.receivers();
  }
  closeAll(receivers);
  clients_.close();
}

std::optional<OSStatus> MIDIServiceEngine::begin(MIDIOperation /*operation*/, Ref /*object*/) const {
  return std::nullopt;
}

void MIDIServiceEngine::edit(const std::function<void(SetupEditor&)>& work) {
  std::vector<MIDIRouting::Receiver> removed;
  {
    const std::lock_guard lock(mutex_);
    SetupEditor editor(setup_, routing_);
    work(editor);
    removed = editor.removedReceivers();
    clients_.notify(editor.messages());
  }
  closeAll(removed);
}

OSStatus MIDIServiceEngine::setProperty(Ref object, std::string_view key, PropertyValue value) {
  const std::lock_guard lock(mutex_);
  return tellChange(setup_.setProperty(object, key, std::move(value)), object, key);
}

OSStatus MIDIServiceEngine::removeProperty(Ref object, std::string_view key) {
  const std::lock_guard lock(mutex_);
  return tellChange(setup_.removeProperty(object, key), object, key);
}

OSStatus MIDIServiceEngine::answerWithNone(Ref object, std::string_view key) {
  const std::lock_guard lock(mutex_);
  return setup_.answerWithNone(object, key);
}

void MIDIServiceEngine::notify(const MIDINotification& message) {
  const std::lock_guard lock(mutex_);
  clients_.notify({message});
}

std::vector<std::string> MIDIServiceEngine::clientNames() const {
  const std::lock_guard lock(mutex_);
  return clients_.names();
}

OSStatus MIDIServiceEngine::tellChange(OSStatus result, Ref object, std::string_view key) {
  if (result == noErr) {
    clients_.notify({propertyChangedMessage(*setup_.find(object), key)});
  }
  return result;
}

std::uint64_t MIDIServiceEngine::machAbsoluteTime() const {
  return static_cast<std::uint64_t>(runtime_.clock().now().time_since_epoch().count());
}

OSStatus MIDIServiceEngine::MIDIClientCreateWithBlock(const std::string& name, Ref& outClient,
                                                      MIDINotifyBlock block) {
  return perform(MIDIOperation::clientCreateWithBlock, 0, [&] {
    outClient = references_.next();
    clients_.add(outClient, name, std::move(block));
    return noErr;
  });
}

std::size_t MIDIServiceEngine::MIDIGetNumberOfDevices() const {
  return look(MIDIOperation::getNumberOfDevices, 0, [&] { return setup_.devices().size(); });
}
MIDIObjectRef MIDIServiceEngine::MIDIGetDevice(std::size_t index) const {
  return look(MIDIOperation::getDevice, 0, [&] { return at(setup_.devices(), index); });
}
std::size_t MIDIServiceEngine::MIDIGetNumberOfSources() const {
  return look(MIDIOperation::getNumberOfSources, 0, [&] { return setup_.sources().size(); });
}
MIDIObjectRef MIDIServiceEngine::MIDIGetSource(std::size_t index) const {
  return look(MIDIOperation::getSource, 0, [&] { return at(setup_.sources(), index); });
}
std::size_t MIDIServiceEngine::MIDIGetNumberOfDestinations() const {
  return look(MIDIOperation::getNumberOfDestinations, 0, [&] { return setup_.destinations().size(); });
}
MIDIObjectRef MIDIServiceEngine::MIDIGetDestination(std::size_t index) const {
  return look(MIDIOperation::getDestination, 0, [&] { return at(setup_.destinations(), index); });
}

std::size_t MIDIServiceEngine::countChildren(MIDIOperation operation, Ref parent, Children list) const {
  return look(operation, parent, [&] {
    const auto* found = setup_.find(parent);
    return found != nullptr ? (found->*list).size() : 0;
  });
}

MIDIObjectRef MIDIServiceEngine::child(MIDIOperation operation, Ref parent, Children list,
                                       std::size_t index) const {
  return look(operation, parent, [&] {
    const auto* found = setup_.find(parent);
    return found != nullptr ? at(found->*list, index) : 0;
  });
}

std::size_t MIDIServiceEngine::MIDIDeviceGetNumberOfEntities(Ref device) const {
  return countChildren(MIDIOperation::deviceGetNumberOfEntities, device, &MIDIObject::entities);
}
MIDIObjectRef MIDIServiceEngine::MIDIDeviceGetEntity(Ref device, std::size_t index) const {
  return child(MIDIOperation::deviceGetEntity, device, &MIDIObject::entities, index);
}
std::size_t MIDIServiceEngine::MIDIEntityGetNumberOfSources(Ref entity) const {
  return countChildren(MIDIOperation::entityGetNumberOfSources, entity, &MIDIObject::sources);
}
MIDIObjectRef MIDIServiceEngine::MIDIEntityGetSource(Ref entity, std::size_t index) const {
  return child(MIDIOperation::entityGetSource, entity, &MIDIObject::sources, index);
}
std::size_t MIDIServiceEngine::MIDIEntityGetNumberOfDestinations(Ref entity) const {
  return countChildren(MIDIOperation::entityGetNumberOfDestinations, entity, &MIDIObject::destinations);
}
MIDIObjectRef MIDIServiceEngine::MIDIEntityGetDestination(Ref entity, std::size_t index) const {
  return child(MIDIOperation::entityGetDestination, entity, &MIDIObject::destinations, index);
}

OSStatus MIDIServiceEngine::MIDIEntityGetDevice(Ref entity, Ref& outDevice) const {
  return perform(MIDIOperation::entityGetDevice, entity, [&] {
    const auto* found = setup_.find(entity);
    if (found == nullptr || found->kind != MIDIObjectKind::entity) {
      return status::objectNotFound;
    }
    outDevice = found->parent;
    return noErr;
  });
}

OSStatus MIDIServiceEngine::MIDIEndpointGetEntity(Ref endpoint, Ref& outEntity) const {
  return perform(MIDIOperation::endpointGetEntity, endpoint, [&] {
    const auto* found = setup_.find(endpoint);
    if (found == nullptr || !found->isEndpoint()) {
      return status::objectNotFound;
    }
    outEntity = found->parent;
    return noErr;
  });
}

OSStatus MIDIServiceEngine::MIDIObjectGetStringProperty(Ref object, std::string_view key,
                                                        std::optional<std::string>& out) const {
  return perform(MIDIOperation::objectGetStringProperty, object,
                 [&] { return setup_.stringProperty(object, key, out); });
}

OSStatus MIDIServiceEngine::MIDIObjectGetIntegerProperty(Ref object, std::string_view key,
                                                         std::int32_t& out) const {
  return perform(MIDIOperation::objectGetIntegerProperty, object,
                 [&] { return setup_.integerProperty(object, key, out); });
}

OSStatus MIDIServiceEngine::MIDIObjectGetDictionaryProperty(Ref object, std::string_view key,
                                                            std::optional<PropertyDictionary>& out) const {
  return perform(MIDIOperation::objectGetDictionaryProperty, object,
                 [&] { return setup_.dictionaryProperty(object, key, out); });
}

OSStatus MIDIServiceEngine::MIDIObjectGetProperties(Ref object, PropertyDictionary& out, bool deep) const {
  return perform(MIDIOperation::objectGetProperties, object,
                 [&] { return setup_.properties(object, out, deep); });
}

OSStatus MIDIServiceEngine::MIDIObjectSetStringProperty(Ref object, std::string_view key,
                                                        std::string_view value) {
  return perform(MIDIOperation::objectSetStringProperty, object,
                 [&] { return tellChange(setup_.setStringProperty(object, key, value), object, key); });
}

OSStatus MIDIServiceEngine::MIDIObjectSetIntegerProperty(Ref object, std::string_view key,
                                                         std::int32_t value) {
  return perform(MIDIOperation::objectSetIntegerProperty, object,
                 [&] { return tellChange(setup_.setIntegerProperty(object, key, value), object, key); });
}

}  // namespace midikit::io::engine
