#include "app/rig/MidiRig.hpp"

#include <utility>

#include "app/rig/Equipment.hpp"

namespace karvex::app {

MidiRig::MidiRig(const CommonOptions& common, std::size_t boards, midikit::io::PlatformVersion platform)
    : runtime(makeRuntime(common)),
      bus(runtime->clock()),
      service(std::make_shared<rig::VirtualMidiService>(*runtime, platform)),
      manager(midikit::io::ObservableMIDIManager::create({.service = service,
                                                          .runtime = *runtime,
                                                          .clientName = "karvex-rig",
                                                          .model = "rig",
                                                          .manufacturer = "Karvex"})) {
  plugIn({.boards = boards}, bus);
  devices = std::make_unique<rig::BoardMidiDevices>(*runtime, bus, *service);
  manager->start();
}

/// No block and no receiver may run while what they use goes.
MidiRig::~MidiRig() {
  manager->removeAll();
  runtime->finish();
}

void MidiRig::at(foundation::Duration delay, foundation::Job action) {
  runtime->mainQueue().postAt(runtime->clock().now() + delay, std::move(action));
}

}  // namespace karvex::app
