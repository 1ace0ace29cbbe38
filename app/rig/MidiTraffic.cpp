#include "app/rig/MidiTraffic.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

#include "MIDIKitCore/MIDI1Parser.hpp"
#include "MIDIKitCore/SysExParser.hpp"
#include "MIDIKitInternals/RadixText.hpp"
#include "app/rig/MidiRig.hpp"

namespace karvex::app {
namespace {

using namespace std::chrono_literals;
using namespace midikit::io;
using midikit::core::MIDIProtocolVersion;
using Bytes = std::vector<std::uint8_t>;

/// Between messages, so that the times tell them apart.
constexpr auto step = 100ms;
/// After the last message: what comes of it is there by then.
constexpr auto rest = 1s;

/// A note with a clock beside it, a controller, a parameter number, a dump.
const std::vector<std::string> phrase = {"903C64", "F8",     "B00740", "B06500",
                                         "B06400", "B0060C", "803C40", "F041100000124000F7"};

/// None unless the text is pairs of hexadecimal digits, the first of which is a status.
std::optional<Bytes> bytesOf(std::string_view text) {
  Bytes bytes;
  for (std::size_t place = 0; place < text.size(); place += 2) {
    const auto digits = text.substr(place, 2);
    std::uint8_t byte = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), byte, 16);
    if (digits.size() != 2 || error != std::errc() || end != digits.data() + 2) {
      return std::nullopt;
    }
    bytes.push_back(byte);
  }
  return !bytes.empty() && bytes.front() >= 0x80 ? std::optional(bytes) : std::nullopt;
}

std::vector<Bytes> messagesOf(const MidiTrafficOptions& options) {
  std::vector<Bytes> messages;
  for (const auto& text : options.messages.empty() ? phrase : options.messages) {
    messages.push_back(*bytesOf(text));
  }
  return messages;
}

/// A system exclusive message is read by itself: the parser of streams takes a universal one without data for
/// none.
std::vector<midikit::core::MIDIEvent> eventsOf(const Bytes& message) {
  constexpr std::uint8_t sysExStart = 0xF0;
  if (message.front() != sysExStart) {
    return midikit::core::MIDI1Parser().parsedEvents(message);
  }
  std::vector<midikit::core::MIDIEvent> events;
  midikit::core::appendSysEx7(message, {}, events);
  return events;
}

PlatformVersion platformOf(const MidiTrafficOptions& options) {
  if (options.platform == "10.15") {
    return {.major = 10, .minor = 15};
  }
  return {.major = std::stoi(options.platform), .minor = 0};
}

CoreMIDIAPIVersion apiOf(const MidiTrafficOptions& options) {
  if (options.api == "legacy") {
    return CoreMIDIAPIVersion::legacyCoreMIDI();
  }
  return CoreMIDIAPIVersion::newCoreMIDI(options.api == "midi1" ? MIDIProtocolVersion::midi1_0
                                                                : MIDIProtocolVersion::midi2_0);
}

MIDIPacketList packetListOf(const Bytes& bytes, std::uint64_t time) {
  MIDIPacketList list(MIDIPacketList::headerSize + MIDIPacketList::packetHeaderSize + bytes.size());
  static_cast<void>(list.add(time, bytes));  // There is room.
  return list;
}

/// A program and boards that play and listen.
class Traffic {
 public:
  Traffic(const CommonOptions& common, const MidiTrafficOptions& options)
      : rig_(common, options.boards, platformOf(options)), start_(rig_.runtime->clock().now()) {
    manager().setPreferredAPI(apiOf(options));
  }

  ObservableMIDIManager& manager() { return *rig_.manager; }
  const std::vector<MIDIOutputEndpoint> sources() { return manager().endpoints().outputs; }
  const std::vector<MIDIInputEndpoint> destinations() { return manager().endpoints().inputs; }

  /// Prints what comes to the boards from that place on.
  void listenAt(std::size_t firstBoard) {
    const auto all = destinations();
    for (std::size_t board = firstBoard; board < all.size(); ++board) {
      const MIDIReadBlock print = [this, name = all[board].name](const MIDIPacketList& list,
                                                                 ConnectionToken) {
        for (std::size_t packet = 0; packet < list.packetCount(); ++packet) {
          sayNow(fmt::format("\"{}\" gets {}", name,
                             midikit::internals::hexText(list.packet(packet).bytes, {.width = 2})));
        }
      };
      rig_.service->readAsEquipment(all[board].coreMIDIObjectRef, print);
    }
  }

  /// Has a board play the messages, from now on.
  void play(std::size_t board, const std::vector<Bytes>& messages, foundation::Duration begin) {
    const auto source = sources().at(board).coreMIDIObjectRef;
    for (const auto& message : messages) {
      at(begin, [this, source, message] {
        rig_.service->sendFromEquipment(source, packetListOf(message, rig_.service->machAbsoluteTime()));
      });
      begin += step;
    }
  }

  void at(foundation::Duration delay, foundation::Job action) {
    end_ = std::max(end_, delay);
    rig_.at(delay, std::move(action));
  }

  void sayNow(const std::string& line) {
    const std::chrono::duration<double> since = rig_.runtime->clock().now() - start_;
    say(fmt::format("[{:7.3f}] {}", since.count(), line));
  }

  /// Until everything has been played and read.
  void run() {
    rig_.at(end_ + rest, [this] { rig_.runtime->stopMain(); });
    rig_.runtime->runMain();
  }

 private:
  MidiRig rig_;
  foundation::TimePoint start_;
  foundation::Duration end_{};
};

int reportError(const std::exception& error) {
  fmt::print(stderr, "karvex-rig: {}\n", error.what());
  return exitLoadFailed;
}

MIDIThruConnection::Parameters parametersOf(const MidiTrafficOptions& options) {
  const auto has = [&options](std::string_view name) {
    return std::ranges::find(options.filters, name) != options.filters.end();
  };
  return {.filterOutAllControls = has("controls"),
          .filterOutBeatClock = has("clock"),
          .filterOutMTC = has("mtc"),
          .filterOutSysEx = has("sysex"),
          .filterOutTuneRequest = has("tune")};
}

}  // namespace

std::string complaintAbout(const std::string& message) {
  return bytesOf(message) ? std::string()
                          : message +
                                " is no MIDI message: pairs of hexadecimal digits that begin with a status, "
                                "as in 903C64.";
}

int runMidiSend(const CommonOptions& common, const MidiTrafficOptions& options) {
  Traffic traffic(common, options);
  traffic.listenAt(0);
  traffic.manager().addOutputConnection({.mode = MIDIOutputConnectionMode::allInputs(), .tag = "boards"});
  const auto output = traffic.manager().managedOutputConnections().at("boards");
  foundation::Duration when{};
  for (const auto& message : messagesOf(options)) {
    traffic.at(when += step, [output, events = eventsOf(message)] { output->sendEvents(events); });
  }
  traffic.run();
  return exitLoaded;
}

int runMidiMonitor(const CommonOptions& common, const MidiTrafficOptions& options) {
  Traffic traffic(common, options);
  const auto print = [&traffic](const std::string& text) { traffic.sayNow(text); };
  traffic.manager().addInputConnection({.mode = MIDIInputConnectionMode::allOutputs(),
                                        .tag = "boards",
                                        .receiver = options.raw ? MIDIReceiver::rawDataLogging(print)
                                                                : MIDIReceiver::eventsLogging({}, print)});
  const auto messages = messagesOf(options);
  for (std::size_t board = 0; board < traffic.sources().size(); ++board) {
    traffic.play(board, messages, step + board * messages.size() * step);
  }
  traffic.run();
  return exitLoaded;
}

int runMidiThru(const CommonOptions& common, const MidiTrafficOptions& options) {
  Traffic traffic(common, options);
  auto inputs = traffic.destinations();
  if (inputs.size() < 2) {
    fmt::print(stderr, "karvex-rig: a thru connection takes two boards or more\n");
    return exitWrongUse;
  }
  inputs.erase(inputs.begin());
  traffic.listenAt(1);
  try {
    traffic.manager().addThruConnection({.outputs = {traffic.sources().front()},
                                         .inputs = std::move(inputs),
                                         .tag = "thru",
                                         .parameters = parametersOf(options)});
  } catch (const midikit::core::MIDIIOError& error) {
    return reportError(error);
  }
  traffic.play(0, messagesOf(options), step);
  traffic.run();
  return exitLoaded;
}

}  // namespace karvex::app
