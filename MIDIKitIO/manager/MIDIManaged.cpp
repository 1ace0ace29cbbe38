#include "MIDIKitIO/manager/MIDIManaged.hpp"

#include "MIDIKitIO/manager/MIDIManager.hpp"

namespace midikit::io::internal {

MIDIManaged::MIDIManaged(const std::shared_ptr<MIDIManager>& manager, CoreMIDIAPIVersion api)
    : midiManager_(manager), service_(manager->service()), api_(api.validOn(service_->platformVersion())) {}

}  // namespace midikit::io::internal
