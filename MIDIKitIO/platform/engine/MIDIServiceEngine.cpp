#include "MIDIKitIO/platform/engine/MIDIServiceEngine.hpp"

#include <utility>

#include "MIDIKitIO/platform/engine/MIDINotifications.hpp"

// The driver's side, clients, the tree and the properties. What has to do with lists is in
// MIDIServiceEngineRouting.cpp.

namespace midikit::io::engine {

namespace {

MIDIObjectRef at(const std::vector<MIDIObjectRef>& list, std::size_t index) {
  return index < list.size() ? list[index] : 0;
}

/// Receivers or gates.
template <typename Closable>
void closeAll(const std::vector<std::shared_ptr<Closable>>& all) {
  for (const auto& one : all) {
    if (one != nullptr) {
      one->close();
    }
  }
}

}  // namespace

MIDIServiceEngine::MIDIServiceEngine(karvex::foundation::Runtime& runtime, PlatformVersion version,
                                     std::shared_ptr<ThruConnectionStore> store,
                                     std::shared_ptr<MIDIDriver> driver)
    : runtime_(runtime),
      version_(version),
      driver_(std::move(driver)),
      store_(std::move(store)),
      setup_(references_, hasProtocols()),
      clients_(runtime),
      thru_(references_, setup_, store_,
            [this](Ref source, Ref destination) { return driver_->connectsByItself(source, destination); }),
      timerQueue_(runtime.globalQueue()),
      timerGate_(std::make_shared<BlockGate>(runtime)) {
  driver_->attach(*this);
  stopObserving_ = store_->observe([this] { thruConnectionsChanged(); });
}

MIDIServiceEngine::~MIDIServiceEngine() {
  close();
}

void MIDIServiceEngine::close() {
  if (isClosed_.exchange(true)) {
    return;
  }
  stopObserving_();
  timerGate_->close();
  driver_->detach();
  closeAll(locked([this] { return routing_.receivers(); }));
  closeAll(locked([this] { return clients_.gates(); }));
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

std::optional<std::string> MIDIServiceEngine::text(Ref object, std::string_view key) const {
  std::optional<std::string> value;
  const OSStatus result = MIDIObjectGetStringProperty(object, key, value);
  return result == noErr ? value : std::nullopt;
}

std::optional<std::int32_t> MIDIServiceEngine::number(Ref object, std::string_view key) const {
  std::int32_t value = 0;
  const OSStatus result = MIDIObjectGetIntegerProperty(object, key, value);
  return result == noErr ? std::optional(value) : std::nullopt;
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
  {
    const std::lock_guard lock(mutex_);
    outClient = references_.next();
    const auto gate = clients_.add(outClient, std::move(block));
    if (isClosed_) {  // By a block that close() waits for.
      gate->close();
    }
  }
  driver_->clientAdded(name);
  return noErr;
}

std::size_t MIDIServiceEngine::MIDIGetNumberOfDevices() const {
  return locked([&] { return setup_.devices().size(); });
}
MIDIObjectRef MIDIServiceEngine::MIDIGetDevice(std::size_t index) const {
  return locked([&] { return at(setup_.devices(), index); });
}
std::size_t MIDIServiceEngine::MIDIGetNumberOfSources() const {
  return locked([&] { return setup_.sources().size(); });
}
MIDIObjectRef MIDIServiceEngine::MIDIGetSource(std::size_t index) const {
  return locked([&] { return at(setup_.sources(), index); });
}
std::size_t MIDIServiceEngine::MIDIGetNumberOfDestinations() const {
  return locked([&] { return setup_.destinations().size(); });
}
MIDIObjectRef MIDIServiceEngine::MIDIGetDestination(std::size_t index) const {
  return locked([&] { return at(setup_.destinations(), index); });
}

std::size_t MIDIServiceEngine::countChildren(Ref parent, Children list) const {
  return locked([&] {
    const auto* found = setup_.find(parent);
    return found != nullptr ? (found->*list).size() : 0;
  });
}

MIDIObjectRef MIDIServiceEngine::child(Ref parent, Children list, std::size_t index) const {
  return locked([&] {
    const auto* found = setup_.find(parent);
    return found != nullptr ? at(found->*list, index) : 0;
  });
}

std::size_t MIDIServiceEngine::MIDIDeviceGetNumberOfEntities(Ref device) const {
  return countChildren(device, &MIDIObject::entities);
}
MIDIObjectRef MIDIServiceEngine::MIDIDeviceGetEntity(Ref device, std::size_t index) const {
  return child(device, &MIDIObject::entities, index);
}
std::size_t MIDIServiceEngine::MIDIEntityGetNumberOfSources(Ref entity) const {
  return countChildren(entity, &MIDIObject::sources);
}
MIDIObjectRef MIDIServiceEngine::MIDIEntityGetSource(Ref entity, std::size_t index) const {
  return child(entity, &MIDIObject::sources, index);
}
std::size_t MIDIServiceEngine::MIDIEntityGetNumberOfDestinations(Ref entity) const {
  return countChildren(entity, &MIDIObject::destinations);
}
MIDIObjectRef MIDIServiceEngine::MIDIEntityGetDestination(Ref entity, std::size_t index) const {
  return child(entity, &MIDIObject::destinations, index);
}

OSStatus MIDIServiceEngine::MIDIEntityGetDevice(Ref entity, Ref& outDevice) const {
  return locked([&] {
    const auto* found = setup_.find(entity);
    if (found == nullptr || found->kind != MIDIObjectKind::entity) {
      return statusOf(MIDIOSStatus::objectNotFound);
    }
    outDevice = found->parent;
    return noErr;
  });
}

OSStatus MIDIServiceEngine::MIDIEndpointGetEntity(Ref endpoint, Ref& outEntity) const {
  return locked([&] {
    const auto* found = setup_.find(endpoint);
    if (found == nullptr || !found->isEndpoint()) {
      return statusOf(MIDIOSStatus::objectNotFound);
    }
    outEntity = found->parent;
    return noErr;
  });
}

OSStatus MIDIServiceEngine::MIDIObjectGetStringProperty(Ref object, std::string_view key,
                                                        std::optional<std::string>& out) const {
  return locked([&] { return setup_.stringProperty(object, key, out); });
}

OSStatus MIDIServiceEngine::MIDIObjectGetIntegerProperty(Ref object, std::string_view key,
                                                         std::int32_t& out) const {
  return locked([&] { return setup_.integerProperty(object, key, out); });
}

OSStatus MIDIServiceEngine::MIDIObjectGetDictionaryProperty(Ref object, std::string_view key,
                                                            std::optional<PropertyDictionary>& out) const {
  return locked([&] { return setup_.dictionaryProperty(object, key, out); });
}

OSStatus MIDIServiceEngine::MIDIObjectGetProperties(Ref object, PropertyDictionary& out, bool deep) const {
  return locked([&] { return setup_.properties(object, out, deep); });
}

OSStatus MIDIServiceEngine::changeProperty(Ref object, std::string_view key,
                                           const std::function<OSStatus()>& change) {
  bool isOwn = false;
  const OSStatus result = locked([&] {
    const OSStatus changed = tellChange(change(), object, key);
    isOwn = changed == noErr && setup_.find(object)->isOwn;
    return changed;
  });
  if (isOwn) {
    driver_->ownEndpointChanged(object, key);
  }
  return result;
}

OSStatus MIDIServiceEngine::MIDIObjectSetStringProperty(Ref object, std::string_view key,
                                                        std::string_view value) {
  return changeProperty(object, key, [&] { return setup_.setStringProperty(object, key, value); });
}

OSStatus MIDIServiceEngine::MIDIObjectSetIntegerProperty(Ref object, std::string_view key,
                                                         std::int32_t value) {
  return changeProperty(object, key, [&] { return setup_.setIntegerProperty(object, key, value); });
}

}  // namespace midikit::io::engine
