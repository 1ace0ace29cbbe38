#include "MIDIKitIO/receive/ReceiveHandler.hpp"

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "MIDIKitCore/wire/UMPWords.hpp"
#include "MIDIKitIO/receive/Events.hpp"
#include "MIDIKitInternals/RadixText.hpp"
#include "foundation/Log.hpp"
#include "foundation/run/SerialQueue.hpp"
#include "tests/MIDIKitCore/Events.hpp"
#include "tests/MIDIKitIO/MIDITestFixture.hpp"

namespace midikit::io {
namespace {

using core::bytesOf;
using core::MIDIEvent;
using Options = MIDIReceiverOptions;
using Lines = std::vector<std::string>;

constexpr auto noOptions = Options();

MIDIPacketSource keyboard() {
  MIDIOutputEndpoint endpoint;
  endpoint.displayName = "Keyboard";
  return std::make_shared<const MIDIOutputEndpoint>(endpoint);
}

/// Events as their bytes, one call a line.
std::string lineOf(std::span<const MIDIEvent> events) {
  std::string line;
  for (const auto& event : events) {
    line.append("[").append(internals::hexText(event.midi1Bytes(), {.width = 2})).append("]");
  }
  return line;
}

class Object final : public ReceivesMIDIEvents {
 public:
  explicit Object(Lines& lines) : lines_(lines) {}
  void eventsReceived(std::span<const MIDIEvent> events, std::uint64_t timeStamp,
                      const MIDIPacketSource& source) override {
    lines_.push_back(lineOf(events) + std::to_string(timeStamp) + source->displayName);
  }

 private:
  Lines& lines_;
};

class ReceiveHandlerTest : public MIDITestFixture {
 protected:
  MIDIReceiver events(Options options, const std::string& name = {}) {
    return MIDIReceiver::events(options, [this, name](auto received, auto, const auto&) {
      lines.push_back(name + lineOf(received));
    });
  }
  MIDIReceiver::TextHandler writer() {
    return [this](const std::string& text) { lines.push_back(text); };
  }

  /// One list: a packet of bytes, or one of words if the text says so.
  void receive(MIDIReceiverProtocol& handler, const std::string& text) {
    constexpr auto words = std::string_view("words ");
    if (text.starts_with(words)) {
      UniversalMIDIPacketData data({}, 7, source);
      data.bytes = MIDIPacketBytes(bytesOf(text.substr(words.size())));
      const auto packet = AnyMIDIPacket::universalPacket(std::move(data));
      handler.universalPacketsReceived(std::span(&packet, 1), core::MIDIProtocolVersion::midi1_0);
    } else {
      const auto packet =
          AnyMIDIPacket::packet({.bytes = MIDIPacketBytes(bytesOf(text)), .timeStamp = 7, .source = source});
      handler.packetsReceived(std::span(&packet, 1));
    }
  }

  std::shared_ptr<karvex::foundation::SerialQueue> queue =
      std::make_shared<karvex::foundation::SerialQueue>(runtime.globalQueue());
  ReceiveContext context{.clock = runtime.clock(), .eventQueue = queue};
  MIDIPacketSource source = keyboard();
  Lines lines;
};

TEST_F(ReceiveHandlerTest, EachReceiverGetsWhatItAskedFor) {
  const auto object = std::make_shared<Object>(lines);
  const auto thrower = MIDIReceiver::events(noOptions, [](auto, auto, const auto&) { throw 1; });
  const std::string rpn("words 40 20 00 00 04 00 00 00");
  struct Case {
    std::string what;
    MIDIReceiver receiver;
    Lines packets;
    Lines expected;
  };
  const Case cases[] = {
      {"running status outlives the packet",
       events(noOptions),
       {"90 3C 40 3E 40", "40 41"},
       {"[90 3C 40][90 3E 40]", "[90 40 41]"}},
      {"each of a group has its own, and is called in turn",
       MIDIReceiver::group({events(noOptions, "a"), MIDIReceiver::group({events(noOptions, "b")})}),
       {"90 3C 40", "3C 00"},
       {"a[90 3C 40]", "b[90 3C 40]", "a[90 3C 00]", "b[90 3C 00]"}},
      {"what has no event makes no call", events(noOptions), {"41", "F4", "words 60 00 00 00"}, {}},
      {"velocity 0 is a note-off if asked for, in bytes alone",
       events(Options::noteOnZeroAsNoteOff),
       {"90 3C 00", "words 20 90 3C 00"},
       {"[80 3C 00]", "[90 3C 00]"}},
      {"clocks and sensing come", events(noOptions), {"F8 FE"}, {"[F8][FE]"}},
      {"or not, and leave no empty call",
       events(Options::dropClockAndSensing),
       {"F8", "90 F8 3C 40 FE FA", "words 10 F8 00 00"},
       {"[90 3C 40][FA]"}},
      {"pieces make one call",
       events(noOptions),
       {"words 30 16 41 01 02 03 04 05", "words 30 31 06 00 00 00 00 00"},
       {"[F0 41 01 02 03 04 05 06 F7]"}},
      {"by the other parser too",
       events(Options::bundleParameterNumbers),
       {"words 30 16 41 01 02 03 04 05", "words 30 31 06 00 00 00 00 00"},
       {"[F0 41 01 02 03 04 05 06 F7]"}},
      {"which holds nothing back by itself",
       events(Options::bundleParameterNumbers),
       {rpn},
       {"[B0 65 00 B0 64 00 B0 06 02 B0 26 00]"}},
      {"events as text",
       MIDIReceiver::eventsLogging(Options::dropClockAndSensing, writer()),
       {"FA FC", "F8"},
       {"start(group: 0x0), stop(group: 0x0) timeStamp:7 source:\"Keyboard\""}},
      {"packets as text",
       MIDIReceiver::rawDataLogging(writer()),
       {"f8 0a", "words 10 F8 00 00"},
       {"F8 0A timeStamp:7 source:\"Keyboard\"", "10 F8 00 00 timeStamp:7 source:\"Keyboard\""}},
      {"every packet, whatever is in it",
       MIDIReceiver::rawData(
           [this](const AnyMIDIPacket& packet) { lines.push_back(std::to_string(packet.bytes().size())); }),
       {"F8 0A", "words 60 00 00 00"},
       {"2", "4"}},
      {"an object",
       MIDIReceiver::object(object, MIDIReceiver::ReceiverRefStorage::strongly, noOptions),
       {"FA"},
       {"[FA]7Keyboard"}},
      {"a throwing callable stops neither its neighbours nor itself",
       MIDIReceiver::group({thrower, MIDIReceiver::rawData([](const auto&) { throw std::logic_error("x"); }),
                            events(noOptions)}),
       {"FA", "FC"},
       {"[FA]", "[FC]"}},
      {"no callables",
       MIDIReceiver::group({MIDIReceiver::events(noOptions, nullptr), MIDIReceiver::eventsLogging(noOptions),
                            MIDIReceiver::rawData(nullptr), MIDIReceiver::rawDataLogging(),
                            MIDIReceiver::strong(nullptr, noOptions)}),
       {"FA"},
       {}},
  };
  Lines logged;
  karvex::foundation::log::redirectDebug([&](std::string_view line) { logged.emplace_back(line); });
  for (const auto& [what, receiver, packets, expected] : cases) {
    lines.clear();
    const auto handler = makeReceiveHandler(receiver, context);
    for (const auto& packet : packets) {
      receive(*handler, packet);
    }
    EXPECT_EQ(lines, expected) << what;
  }
  karvex::foundation::log::redirectDebug(nullptr);
  const Lines thrown = {"A MIDI receiver threw: no std::exception", "A MIDI receiver threw: x"};
  EXPECT_EQ(logged, (Lines{thrown[0], thrown[1], thrown[0], thrown[1]}));
}

TEST_F(ReceiveHandlerTest, AWeakObjectIsKeptAliveByNobodyAndMissedByNobody) {
  using Storage = MIDIReceiver::ReceiverRefStorage;
  for (const auto storage : {Storage::weakly, Storage::strongly}) {
    auto object = std::make_shared<Object>(lines);
    const auto handler = makeReceiveHandler(MIDIReceiver::object(object, storage, noOptions), context);
    receive(*handler, "90 3C 40");
    object.reset();
    receive(*handler, "3C 00");
  }
  EXPECT_EQ(lines, (Lines{"[90 3C 40]7Keyboard", "[90 3C 40]7Keyboard", "[90 3C 00]7Keyboard"}));
}

TEST_F(ReceiveHandlerTest, WhatMergingHoldsBackComesOnTheQueueOrNotAtAll) {
  const std::string rpn("words 40 20 00 00 04 00 00 00");
  const auto make = [&](const std::shared_ptr<karvex::foundation::SerialQueue>& itsQueue) {
    auto handler = receive::EventsBase::create<receive::Events>(
        {.clock = runtime.clock(), .eventQueue = itsQueue}, Options::bundleParameterNumbers,
        [this, on = itsQueue.get()](auto events, auto, const auto&) {
          lines.push_back((on->isCurrent() ? "queue" : "caller") + std::to_string(events.size()));
        });
    handler->advancedMIDI2Parser()->bundleRPNAndNRPNDataEntryLSB = true;
    return handler;
  };
  const auto settle = [&] { runtime.clock().sleepFor(std::chrono::milliseconds(60)); };
  const auto handler = make(queue);
  receive(*handler, rpn);
  EXPECT_EQ(lines, Lines()) << "no call for what is held";
  settle();
  receive(*handler, rpn);
  receive(*handler, "words 10 FA 00 00");
  EXPECT_EQ(lines, (Lines{"queue1", "caller2"}));

  lines.clear();
  auto goesSoon = make(queue);
  receive(*goesSoon, rpn);
  goesSoon.reset();
  auto otherQueue = std::make_shared<karvex::foundation::SerialQueue>(runtime.globalQueue());
  const auto outlivesItsQueue = make(otherQueue);
  otherQueue.reset();
  receive(*outlivesItsQueue, rpn);
  settle();
  EXPECT_EQ(lines, Lines());
}

}  // namespace
}  // namespace midikit::io
