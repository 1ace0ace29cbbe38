#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "app/rig/RigSupport.hpp"

/// `karvex-rig midi send`, `monitor` and `thru`: MIDI between a program and simulated boards.
namespace karvex::app {

struct MidiTrafficOptions {
  std::size_t boards = 3;
  /// "10.15", "11", "12" or "13": what the simulated platform's MIDI service is like.
  std::string platform = "13";
  /// "legacy", "midi1" or "midi2": the interface that the program uses.
  std::string api = "midi2";
  /// What is sent or played, each a MIDI 1.0 message as hexadecimal digits. Without any: a short phrase.
  std::vector<std::string> messages;
  /// Of `monitor`: packets as bytes instead of events.
  bool raw = false;
  /// Of `thru`: "controls", "clock", "mtc", "sysex" or "tune".
  std::vector<std::string> filters;
};

/// A sentence that says what is wrong with a message, or nothing.
std::string complaintAbout(const std::string& message);

/// Sends the messages to all boards, and prints what each one gets.
int runMidiSend(const CommonOptions& common, const MidiTrafficOptions& options);
/// Has the boards play one after the other, and prints what a receiver is handed.
int runMidiMonitor(const CommonOptions& common, const MidiTrafficOptions& options);
/// Makes a thru connection from the first board to all others, has that one play, and prints what the others
/// get.
int runMidiThru(const CommonOptions& common, const MidiTrafficOptions& options);

}  // namespace karvex::app
