#include "rig/midi/VirtualMidiService.hpp"

#include <utility>

namespace karvex::rig {

using namespace midikit::io;
using engine::MIDIObjectKind;
using engine::SetupEditor;

VirtualMidiService::VirtualMidiService(foundation::Runtime& runtime, PlatformVersion version,
                                       std::shared_ptr<ThruConnectionStore> store)
    : MIDIServiceEngine(runtime, version, std::move(store)), equipmentQueue_(runtime.globalQueue()) {}

VirtualMidiService::~VirtualMidiService() {
  close();
}

std::optional<OSStatus> VirtualMidiService::begin(MIDIOperation operation, Ref object) const {
  return calls_.begin(operation, object);
}

MIDIObjectRef VirtualMidiService::addDevice(const DeviceDescription& description) {
  Ref device = 0;
  edit([&](SetupEditor& editor) { device = editor.addDevice(description); });
  return device;
}

bool VirtualMidiService::removeDevice(Ref device) {
  bool isDevice = false;
  edit([&](SetupEditor& editor) {
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
  edit([&](SetupEditor& editor) { result = editor.setPropertyThroughout(object, key, value); });
  return result;
}

OSStatus VirtualMidiService::readAsEquipment(Ref destination, MIDIReader reader) {
  return MIDIServiceEngine::readAsEquipment(destination, equipmentQueue_, std::move(reader));
}

}  // namespace karvex::rig
