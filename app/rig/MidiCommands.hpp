#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

#include "app/rig/RigSupport.hpp"

namespace karvex::app {

struct MidiOptions {
  std::size_t boards = 3;
  /// Name or unique ID of the objects whose properties are printed.
  std::optional<std::string> object;
  /// The properties of all objects, and also those that an object's kind doesn't have.
  bool allProperties = false;
  /// Play a scene on the bus and print what the MIDI layer tells of it.
  bool follows = false;
  std::chrono::seconds followTime{6};
};

/// Prints the tree of the simulated MIDI devices, properties, and the notifications of a scene: another board
/// is plugged in, the first one goes into its bootloader and comes back. Exit status 2 if there is no such
/// object.
int runMidi(const CommonOptions& common, const MidiOptions& options);

}  // namespace karvex::app
