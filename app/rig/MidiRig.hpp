#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "MIDIKitIO/manager/ObservableMIDIManager.hpp"
#include "app/rig/RigSupport.hpp"
#include "rig/VirtualBus.hpp"
#include "rig/midi/BoardMidiDevices.hpp"
#include "rig/midi/VirtualMidiService.hpp"

namespace karvex::app {

/// Boards on a bus, the MIDI service that they are devices of, and a manager as a program has it.
class MidiRig {
 public:
  MidiRig(const CommonOptions& common, std::size_t boards,
          midikit::io::PlatformVersion platform = {.major = 13, .minor = 0});
  ~MidiRig();
  MidiRig(const MidiRig&) = delete;
  MidiRig& operator=(const MidiRig&) = delete;

  /// Calls `action` on the main queue, that long from now.
  void at(foundation::Duration delay, foundation::Job action);

  std::unique_ptr<foundation::Runtime> runtime;
  rig::VirtualBus bus;
  std::shared_ptr<rig::VirtualMidiService> service;
  std::unique_ptr<rig::BoardMidiDevices> devices;
  std::shared_ptr<midikit::io::ObservableMIDIManager> manager;
};

}  // namespace karvex::app
