// From the sender's call to the receiver's: on the service in memory, and, where there is a sequencer, on the
// kernel beside the library's plain calls.
//
// Run: midi_delivery_bench [NOTES], or tests/kernel/run build/bench/bench/midi_delivery_bench 2000

#include <fmt/format.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "MIDIKitIO/manager/MIDIManager.hpp"
#include "MIDIKitIO/platform/linux/AlsaMIDIService.hpp"
#include "bench/MIDIKitIO/Delivery.hpp"
#include "bench/MIDIKitIO/PlainSequencer.hpp"
#include "foundation/run/SystemRuntime.hpp"
#include "rig/midi/VirtualMidiService.hpp"

namespace midikit::bench {
namespace {

using namespace midikit::core::literals;
using core::MIDIEvent;
using core::MIDIProtocolVersion;
using io::CoreMIDIAPIVersion;

std::shared_ptr<io::MIDIManager> managerOn(std::shared_ptr<io::MIDIService> service,
                                           karvex::foundation::Runtime& runtime, CoreMIDIAPIVersion api) {
  auto manager = io::MIDIManager::create({.service = std::move(service),
                                          .runtime = runtime,
                                          .clientName = "Delivery bench",
                                          .model = "bench",
                                          .manufacturer = "Karvex"});
  manager->setPreferredAPI(api);
  manager->start();
  return manager;
}

io::MIDIReceiver counting(Arrivals& arrivals) {
  return io::MIDIReceiver::events(
      {}, [&arrivals](std::span<const MIDIEvent> events, std::uint64_t, const io::MIDIPacketSource&) {
        arrivals.add(events.size());
      });
}

MIDIEvent noteOn(std::uint8_t note) {
  return MIDIEvent::noteOn(core::UInt7(note), core::ChanVoice7Bit16BitValue::midi1(100_u7), 0_u4);
}

/// A virtual output of the program, and a connection of the program's that listens to it.
void measureInMemory(CoreMIDIAPIVersion api, std::size_t notes) {
  karvex::foundation::SystemRuntime runtime;
  const auto service = std::make_shared<karvex::rig::VirtualMidiService>(runtime);
  const auto manager = managerOn(service, runtime, api);
  Arrivals arrivals;
  manager->addOutput({.name = "output", .tag = "output"});
  manager->addInputConnection(
      {.mode = io::MIDIInputConnectionMode::outputs({io::MIDIEndpointIdentity::name("output")}),
       .tag = "connection",
       .receiver = counting(arrivals)});
  const auto output = manager->managedOutputs().at("output");
  print(api.description(),
        measureDelivery([&](std::uint8_t note) { output->sendEvent(noteOn(note)); }, arrivals, notes),
        nullptr);
  manager->removeAll();
  runtime.finish();
}

/// To another program on the kernel's sequencer, which reads with plain calls, and from it; in turns with the
/// plain calls of one such program to another, so that what else the machine does meets them alike.
void measureOnKernel(CoreMIDIAPIVersion api, std::size_t notes, PlainSequencer& plain, Arrivals& arrivals) {
  constexpr int rounds = 7;
  karvex::foundation::SystemRuntime runtime;
  const auto manager = managerOn(io::makeAlsaMIDIService(runtime), runtime, api);
  manager->addOutputConnection({.mode = io::MIDIOutputConnectionMode::inputs(
                                    {io::MIDIEndpointIdentity::name(PlainSequencer::inputName)}),
                                .tag = "output"});
  const auto output = manager->managedOutputConnections().at("output");
  manager->addInput({.name = "bench input", .tag = "input", .receiver = counting(arrivals)});
  const int toPlain = plain.connectTo(plain.input());
  const int toInput = plain.connectTo(plain.find("bench input").value());
  std::vector<DeliveryFigures> plainly;
  std::vector<DeliveryFigures> sending;
  std::vector<DeliveryFigures> receiving;
  for (int round = 0; round < rounds; ++round) {
    const auto measure = [&](const Route& route) { return measureDelivery(route, arrivals, notes / rounds); };
    plainly.push_back(measure([&](std::uint8_t note) { plain.send(toPlain, note); }));
    sending.push_back(measure([&](std::uint8_t note) { output->sendEvent(noteOn(note)); }));
    receiving.push_back(measure([&](std::uint8_t note) { plain.send(toInput, note); }));
  }
  const auto reference = medianOf(plainly);
  print("plain calls", reference, nullptr);
  print(api.description() + ", sending", medianOf(sending), &reference);
  print(api.description() + ", receiving", medianOf(receiving), &reference);
  manager->removeAll();
  runtime.finish();
}

}  // namespace
}  // namespace midikit::bench

int main(int argc, char** argv) {
  // An emulated machine takes a hundredth of them.
  const std::size_t notes = argc > 1 ? std::stoul(argv[1]) : 200'000;
  using namespace midikit::bench;
  const auto versions = {CoreMIDIAPIVersion::legacyCoreMIDI(),
                         CoreMIDIAPIVersion::newCoreMIDI(MIDIProtocolVersion::midi1_0),
                         CoreMIDIAPIVersion::newCoreMIDI(MIDIProtocolVersion::midi2_0)};
  fmt::print(
      "From sendEvent to the receiver's call; allocations for an event: sending + receiving\n\n"
      "In memory\n");
  for (const auto version : versions) {
    measureInMemory(version, notes);
  }
  Arrivals arrivals;
  PlainSequencer plain(arrivals);
  if (!plain.isThere()) {
    fmt::print("\nThere is no sequencer here, so the kernel is left out.\n");
    return 0;
  }
  fmt::print("\nBy the kernel; in brackets: of the plain calls\n");
  for (const auto version : versions) {
    measureOnKernel(version, notes, plain, arrivals);
  }
  return 0;
}
