#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "foundation/run/Runtime.hpp"
#include "rig/VirtualBus.hpp"
#include "rig/midi/VirtualMidiService.hpp"

namespace karvex::rig {

/// Makes each board of a bus a device of a MIDI service: one entity with one source and one destination, and
/// "SerialNumber". A board that isn't running its firmware stays in the lists and is "offline".
///
/// Boards that are there at the start are devices when the constructor returns. Later changes come to the
/// service on a thread of the runtime, at the moment at which they happen: the bus tells of what is done to a
/// board, and for what the board then does by itself a timer is set. Nothing runs meanwhile.
class BoardMidiDevices {
 public:
  /// All three must outlive this object.
  BoardMidiDevices(foundation::Runtime& runtime, VirtualBus& bus, VirtualMidiService& service);
  ~BoardMidiDevices();
  BoardMidiDevices(const BoardMidiDevices&) = delete;
  BoardMidiDevices& operator=(const BoardMidiDevices&) = delete;

  /// The device of each board, by the board's place on the bus.
  std::vector<midikit::io::MIDIObjectRef> devices() const;

 private:
  struct State;
  std::shared_ptr<State> state_;
  foundation::Subscription subscription_;
};

}  // namespace karvex::rig
