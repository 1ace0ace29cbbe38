// Prints what comes from every source of the machine, also from those that are plugged in later.
//
// Run: monitor_midi [--json]   (ends at Ctrl-C; with --json each line is an object of JSON)

#include <iostream>
#include <span>
#include <string>
#include <string_view>

#include "MIDIKitInternals/RadixText.hpp"
#include "examples/MIDIProgram.hpp"

namespace {

using namespace midikit::io;
using midikit::core::MIDIEvent;
using midikit::internals::hexText;

/// Names come from devices and may hold anything but control characters, which the service replaces.
std::string quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char character : text) {
    quoted += character == '"' || character == '\\' ? std::string{'\\', character} : std::string{character};
  }
  return quoted + '"';
}

void printJson(std::span<const MIDIEvent> events, std::uint64_t timeStamp, const MIDIPacketSource& source) {
  for (const auto& event : events) {
    std::cout << R"({"time": )" << timeStamp << R"(, "source": )"
              << (source ? quoted(source->displayName) : "null") << R"(, "event": )"
              << quoted(event.debugDescription()) << R"(, "bytes": ")"
              << hexText(event.midi1Bytes(), {.width = 2}) << "\"}" << std::endl;
  }
}

MIDIReceiver receiver(bool asJson) {
  return asJson
             ? MIDIReceiver::events(MIDIReceiverOptions::dropClockAndSensing, printJson)
             : MIDIReceiver::eventsLogging(MIDIReceiverOptions::dropClockAndSensing,
                                           [](const std::string& line) { std::cout << line << std::endl; });
}

}  // namespace

int main(int argc, char** argv) {
  const bool asJson = argc == 2 && std::string_view(argv[1]) == "--json";
  if (argc > 1 && !asJson) {
    std::cerr << "usage: monitor_midi [--json]\n";
    return 2;
  }
  try {
    midikit::examples::MIDIProgram program("MIDI monitor");
    program.manager().addInputConnection(
        {.mode = MIDIInputConnectionMode::allOutputs(), .tag = "all", .receiver = receiver(asJson)});
    program.awaitEnd();
  } catch (const midikit::core::MIDIIOError& error) {
    std::cerr << "monitor_midi: " << error.what() << '\n';
    return 1;
  }
}
