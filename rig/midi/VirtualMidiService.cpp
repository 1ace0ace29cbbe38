#include "rig/midi/VirtualMidiService.hpp"

#include <mutex>
#include <utility>

#include "foundation/run/SerialQueue.hpp"

namespace karvex::rig {

using namespace midikit::io;
using engine::MIDIObjectKind;
using engine::SetupEditor;

/// Keeps what the engine hands to its equipment's side.
class VirtualMidiService::Driver final : public engine::MIDIDriver {
 public:
  explicit Driver(foundation::Runtime& runtime) : queue_(runtime.globalQueue()) {}

  void attach(engine::MIDIDriverHost& host) override { host_ = &host; }
  void clientAdded(const std::string& name) override {
    const std::lock_guard lock(mutex_);
    clientNames_.push_back(name);
  }

  engine::MIDIDriverHost& host() const { return *host_; }
  foundation::SerialQueue& queue() { return queue_; }
  std::vector<std::string> clientNames() const {
    const std::lock_guard lock(mutex_);
    return clientNames_;
  }

 private:
  engine::MIDIDriverHost* host_ = nullptr;
  foundation::SerialQueue queue_;
  mutable std::mutex mutex_;  ///< of what follows
  std::vector<std::string> clientNames_;
};

VirtualMidiService::VirtualMidiService(foundation::Runtime& runtime, PlatformVersion version,
                                       std::shared_ptr<ThruConnectionStore> store)
    : VirtualMidiService(assemble(runtime, version, std::move(store))) {}

VirtualMidiService::VirtualMidiService(Parts parts)
    : CountedMidiService(parts.engine), parts_(std::move(parts)) {}

VirtualMidiService::Parts VirtualMidiService::assemble(foundation::Runtime& runtime, PlatformVersion version,
                                                       std::shared_ptr<ThruConnectionStore> store) {
  auto driver = std::make_shared<Driver>(runtime);
  auto engine = std::make_shared<engine::MIDIServiceEngine>(runtime, version, std::move(store), driver);
  return {std::move(driver), std::move(engine)};
}

VirtualMidiService::~VirtualMidiService() {
  parts_.engine->close();  // A block under way may be using this object.
}

std::vector<std::string> VirtualMidiService::clientNames() const {
  return parts_.driver->clientNames();
}

MIDIObjectRef VirtualMidiService::addDevice(const DeviceDescription& description) {
  Ref device = 0;
  parts_.driver->host().edit([&](SetupEditor& editor) { device = editor.addDevice(description); });
  return device;
}

bool VirtualMidiService::removeDevice(Ref device) {
  bool isDevice = false;
  parts_.driver->host().edit([&](SetupEditor& editor) {
    const auto* found = editor.setup().find(device);
    isDevice = found != nullptr && found->kind == MIDIObjectKind::device;
    if (isDevice) {
      editor.remove(device);
    }
  });
  return isDevice;
}

OSStatus VirtualMidiService::setPropertyThroughout(Ref object, std::string_view key,
                                                   const PropertyValue& value) {
  OSStatus result = noErr;
  parts_.driver->host().edit(
      [&](SetupEditor& editor) { result = editor.setPropertyThroughout(object, key, value); });
  return result;
}

OSStatus VirtualMidiService::readAsEquipment(Ref destination, MIDIReader reader) {
  return parts_.driver->host().readAsEquipment(destination, parts_.driver->queue(), std::move(reader));
}

OSStatus VirtualMidiService::setProperty(Ref object, std::string_view key, PropertyValue value) {
  return parts_.driver->host().setProperty(object, key, std::move(value));
}

OSStatus VirtualMidiService::removeProperty(Ref object, std::string_view key) {
  return parts_.driver->host().removeProperty(object, key);
}

OSStatus VirtualMidiService::answerWithNone(Ref object, std::string_view key) {
  return parts_.driver->host().answerWithNone(object, key);
}

void VirtualMidiService::notify(const MIDINotification& message) {
  parts_.driver->host().notify(message);
}

OSStatus VirtualMidiService::sendFromEquipment(Ref source, const MIDIList& list) {
  engine::Handovers handovers;
  const OSStatus result = parts_.driver->host().sendFromEquipment(source, list, handovers);
  handovers.make(engine::ListReceiver::Thread::queues);
  return result;
}

}  // namespace karvex::rig
