// Hands on what comes from one device to another, transposed and without clocks. Either may come later, or go
// and come back.
//
// Run: thru_midi FROM TO [SEMITONES]   (display names, as monitor_midi shows them; ends at Ctrl-C)

#include <cstdlib>
#include <iostream>
#include <memory>
#include <span>
#include <vector>

#include "MIDIKitCore/filters/MIDIEventFilterGroup.hpp"
#include "examples/MIDIProgram.hpp"
#include "examples/Transposition.hpp"

namespace {

using namespace midikit::io;
using midikit::core::MIDIEvent;

/// Hands on events as it gets them. The connections refer to it, and it to one of them.
class Transposer final : public ReceivesMIDIEvents {
 public:
  Transposer(std::shared_ptr<MIDIOutputConnection> output, int semitones)
      : output_(std::move(output)), semitones_(semitones) {}

  void eventsReceived(std::span<const MIDIEvent> events, std::uint64_t, const MIDIPacketSource&) override {
    events_.assign(events.begin(), events.end());
    std::erase_if(events_,
                  [this](MIDIEvent& event) { return !midikit::examples::transpose(event, semitones_); });
    if (!events_.empty()) {
      output_->sendEvents(events_);
    }
  }

 private:
  std::shared_ptr<MIDIOutputConnection> output_;
  int semitones_;
  std::vector<MIDIEvent> events_;  ///< keeps its memory from call to call
};

}  // namespace

int main(int argc, char** argv) {
  const auto semitones = argc == 4 ? midikit::examples::semitonesOf(argv[3]) : std::optional(0);
  if (argc < 3 || argc > 4 || !semitones) {
    std::cerr << "usage: thru_midi FROM TO [SEMITONES]\n";
    return 2;
  }
  try {
    midikit::examples::MIDIProgram program("MIDI thru");
    auto& manager = program.manager();
    manager.addOutputConnection(
        {.mode = MIDIOutputConnectionMode::inputs({MIDIEndpointIdentity::displayName(argv[2])}),
         .tag = "to"});
    const auto transposer =
        std::make_shared<Transposer>(manager.managedOutputConnections().at("to"), *semitones);
    manager.addInputConnection(
        {.mode = MIDIInputConnectionMode::outputs({MIDIEndpointIdentity::displayName(argv[1])}),
         .tag = "from",
         .receiver = MIDIReceiver::strong(transposer, MIDIReceiverOptions::dropClockAndSensing)});
    program.awaitEnd();
  } catch (const midikit::core::MIDIIOError& error) {
    std::cerr << "thru_midi: " << error.what() << '\n';
    return 1;
  }
}
