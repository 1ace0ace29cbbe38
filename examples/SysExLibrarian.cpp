// Keeps the memory of an instrument in a file, and brings it back.
//
// Run: sysex_librarian save SOURCE FILE      (writes each message as it comes; ends at Ctrl-C)
//      sysex_librarian send FILE DESTINATION (display names, as monitor_midi shows them)

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "MIDIKitCore/SysExParser.hpp"
#include "MIDIKitIO/objects/PropertyAccess.hpp"
#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"
#include "examples/Bytes.hpp"
#include "examples/MIDIProgram.hpp"

namespace {

using namespace midikit::io;
using midikit::core::MIDIEvent;
using midikit::examples::MIDIProgram;

bool isSysEx(const MIDIEvent& event) {
  return event.visit([](const MIDIEvent::SysEx7&) { return true; },
                     [](const MIDIEvent::UniversalSysEx7&) { return true; },
                     [](const auto&) { return false; });
}

int save(const std::string& source, const char* path) {
  std::ofstream file(path, std::ios::binary);
  if (!file) {
    std::cerr << "sysex_librarian: can't write to " << path << '\n';
    return 1;
  }
  MIDIProgram program("SysEx librarian");
  const auto write = [&file](std::span<const MIDIEvent> events, std::uint64_t, const MIDIPacketSource&) {
    for (const auto& event : events) {
      if (isSysEx(event)) {
        const auto bytes = event.midi1Bytes();
        midikit::examples::writeBytes(bytes, file);
        file.flush();
        std::cout << bytes.size() << " bytes" << std::endl;
      }
    }
  };
  program.manager().addInputConnection(
      {.mode = MIDIInputConnectionMode::outputs({MIDIEndpointIdentity::displayName(source)}),
       .tag = "source",
       .receiver = MIDIReceiver::events({}, write)});
  program.awaitEnd();
  return file ? 0 : 1;
}

/// The messages of a file, or none if there is anything else in it.
std::vector<MIDIEvent> messagesIn(std::span<const std::uint8_t> bytes) {
  std::vector<MIDIEvent> messages;
  for (auto at = bytes.begin(); at != bytes.end();) {
    const auto last = std::find(at, bytes.end(), 0xF7);
    const auto end = last != bytes.end() ? last + 1 : last;
    const auto message = midikit::core::parseSysEx7({at, end});
    if (!message) {
      return {};
    }
    messages.push_back(*message);
    at = end;
  }
  return messages;
}

/// The service sends at the rate of the destination. What it has been handed is gone when the program ends,
/// so this waits for as long as that takes.
void awaitDelivery(MIDIProgram& program, const MIDIInputEndpoint& destination, std::size_t bytes) {
  const auto rate = std::max(integerProperty(*program.manager().service(), destination.coreMIDIObjectRef,
                                             kMIDIPropertyMaxSysExSpeed),
                             3125);
  program.runtime().clock().sleepFor(
      std::chrono::milliseconds(500) +
      std::chrono::milliseconds(bytes * 1000 / static_cast<std::size_t>(rate)));
}

int send(const char* path, const std::string& name) {
  std::ifstream file(path, std::ios::binary);
  const auto bytes = midikit::examples::readBytes(file);
  const auto messages = messagesIn(bytes);
  if (messages.empty()) {
    std::cerr << "sysex_librarian: " << path
              << " holds no system exclusive messages, or something else too\n";
    return 1;
  }
  MIDIProgram program("SysEx librarian");
  program.manager().addOutputConnection(
      {.mode = MIDIOutputConnectionMode::inputs({MIDIEndpointIdentity::displayName(name)}),
       .tag = "destination"});
  const auto output = program.manager().managedOutputConnections().at("destination");
  const auto destinations = output->endpoints();
  if (destinations.empty()) {
    std::cerr << "sysex_librarian: there is no destination with the name " << name << '\n';
    return 1;
  }
  output->sendEvents(messages);
  awaitDelivery(program, destinations.front(), bytes.size());
  std::cout << messages.size() << " messages, " << bytes.size() << " bytes\n";
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view what = argc == 4 ? argv[1] : "";
  if (what != "save" && what != "send") {
    std::cerr << "usage: sysex_librarian save SOURCE FILE | send FILE DESTINATION\n";
    return 2;
  }
  try {
    return what == "save" ? save(argv[2], argv[3]) : send(argv[2], argv[3]);
  } catch (const midikit::core::MIDIIOError& error) {
    std::cerr << "sysex_librarian: " << error.what() << '\n';
    return 1;
  }
}
