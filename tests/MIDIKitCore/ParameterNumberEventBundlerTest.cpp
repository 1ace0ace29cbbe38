#include "MIDIKitCore/ParameterNumberEventBundler.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "MIDIKitCore/AdvancedMIDI2Parser.hpp"
#include "foundation/run/VirtualRuntime.hpp"
#include "tests/MIDIKitCore/Events.hpp"

namespace midikit::core {
namespace {

using namespace literals;
using namespace std::chrono_literals;
using karvex::foundation::Duration;
using Source = std::optional<std::string>;

MIDIEvent rpn(std::optional<UInt7> msb, std::optional<UInt7> lsb, UInt4 channel = 0_u4, UInt7 number = 9_u7) {
  return MIDIEvent::rpn(RegisteredController::raw({.msb = 2_u7, .lsb = number}, msb, lsb), channel);
}

MIDIEvent nrpn(UInt7 msb, std::optional<UInt7> lsb) {
  return MIDIEvent::nrpn(AssignableController::raw({.msb = 2_u7, .lsb = 9_u7}, msb, lsb), 0_u4);
}

class ParameterNumberEventBundlerTest : public testing::Test {
 protected:
  struct Delivery {
    Duration at;
    Events events;
    std::uint64_t timestamp;
    Source source;
    bool operator==(const Delivery&) const = default;
  };

  ParameterNumberEventBundler<Source>::HandleEvents handler() {
    return [this](std::span<const MIDIEvent> events, std::uint64_t timestamp, const Source& source) {
      deliveries.push_back({elapsed(), {events.begin(), events.end()}, timestamp, source});
    };
  }

  Duration elapsed() { return runtime.clock().now() - start; }

  void runFor(Duration span) {
    runtime.mainQueue().postAt(runtime.clock().now() + span, [this] { runtime.stopMain(); });
    runtime.runMain();
  }

  /// What a batch becomes.
  Events processed(Events events) {
    bundler->process(events, 7, "port");
    return events;
  }

  karvex::foundation::VirtualRuntime runtime;
  karvex::foundation::TimePoint start = runtime.clock().now();
  std::vector<Delivery> deliveries;
  std::unique_ptr<ParameterNumberEventBundler<Source>> bundler =
      std::make_unique<ParameterNumberEventBundler<Source>>(runtime.clock(), runtime.mainQueue(), handler());
};

const Events nothing;

TEST_F(ParameterNumberEventBundlerTest, BatchesAreRewrittenInPlace) {
  const auto clock = MIDIEvent::timingClock();
  const auto half = rpn(1_u7, {});
  const auto zero = rpn(1_u7, 0_u7);
  const auto whole = rpn(1_u7, 5_u7);
  const auto elsewhere =
      MIDIEvent::rpn(whole.as<RPN>()->parameter, MIDI2ParameterNumberChange::relative, 3_u4, 2_u4);
  // Each row starts with nothing held; its batches come in one after the other.
  const struct {
    std::string what;
    std::vector<std::pair<Events, Events>> batches;
  } rows[] = {
      {"nothing to do", {{{}, {}}, {{clock, whole, clock}, {clock, whole, clock}}}},
      {"a half, then the whole", {{{half}, {}}, {{whole}, {whole}}, {{clock}, {clock}}}},
      {"the same in one batch", {{{half, whole}, {whole}}}},
      {"a byte of 0 counts as absent", {{{zero}, {}}, {{whole}, {whole}}}},
      {"channel, group and change aren't compared", {{{half}, {}}, {{elsewhere}, {elsewhere}}}},
      {"another entry", {{{half}, {}}, {{rpn(2_u7, 5_u7)}, {half, rpn(2_u7, 5_u7)}}}},
      {"another parameter",
       {{{half}, {}}, {{rpn(1_u7, 5_u7, 0_u4, 8_u7)}, {half, rpn(1_u7, 5_u7, 0_u4, 8_u7)}}}},
      {"a half again", {{{half}, {}}, {{half}, {half, half}}, {{half}, {}}, {{clock}, {half, clock}}}},
      {"three halves", {{{half, half, half}, {half, half}}, {{}, {}}, {{clock}, {half, clock}}}},
      {"what waited goes ahead of all", {{{clock, half, clock, clock}, {half, clock, clock, clock}}}},
      {"the kinds flush each other",
       {{{half}, {}}, {{nrpn(1_u7, {})}, {half}}, {{half}, {nrpn(1_u7, {})}}, {{whole}, {whole}}}},
      {"what went ahead keeps its order",
       {{{half, nrpn(1_u7, {}), clock}, {half, nrpn(1_u7, {}), clock}},
        {{nrpn(1_u7, {}), half, clock}, {nrpn(1_u7, {}), half, clock}}}},
      {"both without a byte of the entry", {{{rpn({}, {})}, {}}, {{rpn({}, 5_u7)}, {rpn({}, 5_u7)}}}},
      {"one of them without", {{{rpn({}, {})}, {}}, {{rpn(0_u7, 5_u7)}, {rpn({}, {}), rpn(0_u7, 5_u7)}}}},
      {"an NRPN doesn't complete an RPN", {{{half}, {}}, {{nrpn(1_u7, 5_u7)}, {half, nrpn(1_u7, 5_u7)}}}},
      {"NRPN", {{{nrpn(1_u7, {})}, {}}, {{nrpn(1_u7, 5_u7)}, {nrpn(1_u7, 5_u7)}}}},
      {"an empty batch decides nothing", {{{half}, {}}, {{}, {}}, {{whole}, {whole}}}},
  };
  for (const auto& [what, batches] : rows) {
    for (const auto& [events, expected] : batches) {
      EXPECT_EQ(processed(events), expected) << what;
    }
    processed({clock});
  }
  EXPECT_TRUE(deliveries.empty()) << "no time has passed";
}

TEST_F(ParameterNumberEventBundlerTest, WhatNobodyCompletesArrivesAfter50MillisecondsWithItsOwnTimestamp) {
  processed({rpn(1_u7, {})});
  runFor(49ms);
  EXPECT_TRUE(deliveries.empty());
  runFor(1s);
  EXPECT_EQ(deliveries, (std::vector<Delivery>{{50ms, {rpn(1_u7, {})}, 7, "port"}}));
  EXPECT_EQ(processed({rpn(1_u7, 5_u7)}), Events{rpn(1_u7, 5_u7)}) << "nothing is held any more";
}

TEST_F(ParameterNumberEventBundlerTest, WhatIsDecidedBeforeDoesNotArriveAgain) {
  processed({rpn(1_u7, {})});
  runFor(10ms);
  EXPECT_EQ(processed({rpn(1_u7, 5_u7)}), Events{rpn(1_u7, 5_u7)});
  runFor(30ms);
  processed({nrpn(1_u7, {})});
  runFor(30ms);
  EXPECT_TRUE(deliveries.empty()) << "the first one's time has passed";
  runFor(1s);
  EXPECT_EQ(deliveries, (std::vector<Delivery>{{90ms, {nrpn(1_u7, {})}, 7, "port"}}));
}

TEST_F(ParameterNumberEventBundlerTest, WhatIsHeldWhenTheBundlerGoesIsLost) {
  processed({rpn(1_u7, {})});
  processed({nrpn(1_u7, {})});
  bundler.reset();
  runFor(1s);
  EXPECT_TRUE(deliveries.empty());
}

/// A record as a receive handler has it.
struct Packet {
  Bytes bytes;
  std::uint64_t timeStamp = 0;
  Source source;
};

TEST_F(ParameterNumberEventBundlerTest, TheAdvancedParserBundlesIfItIsToldTo) {
  AdvancedMIDI2Parser<Source> parser(runtime.clock(), runtime.mainQueue(), handler());
  const Packet half{bytesOf("40 20 02 09 02 00 00 00"), 1, "a"};
  const Packet whole{bytesOf("40 20 02 09 02 14 00 00"), 2, "b"};
  const Packet unreadable{bytesOf("60 00 00 00"), 3, {}};
  const auto asHalf = rpn(1_u7, 0_u7);
  const auto asWhole = rpn(1_u7, 5_u7);

  parser.parseEvents(half);
  parser.parseEvents(unreadable);
  parser.bundleRPNAndNRPNDataEntryLSB = true;
  parser.parseEvents(half);
  parser.parseEvents(unreadable);
  parser.parseEvents(whole);
  parser.parseEvents(half);
  runFor(1s);
  EXPECT_EQ(deliveries, (std::vector<Delivery>{{0ms, {asHalf}, 1, "a"},
                                               {0ms, nothing, 3, {}},
                                               {0ms, nothing, 1, "a"},
                                               {0ms, nothing, 3, {}},
                                               {0ms, {asWhole}, 2, "b"},
                                               {0ms, nothing, 1, "a"},
                                               {50ms, {asHalf}, 1, "a"}}));
}

TEST_F(ParameterNumberEventBundlerTest, AHandlerMayParseAnotherPacket) {
  AdvancedMIDI2Parser<Source>* parser = nullptr;
  int depth = 0;
  AdvancedMIDI2Parser<Source> outer(
      runtime.clock(), runtime.mainQueue(),
      [&](std::span<const MIDIEvent> events, std::uint64_t timestamp, const Source& source) {
        if (++depth == 1) {
          parser->parseEvents(bytesOf("10 FA 00 00"), 2, source);
        }
        handler()(events, timestamp, source);
      });
  parser = &outer;
  outer.parseEvents(bytesOf("10 F8 00 00"), 1, {});
  EXPECT_EQ(deliveries, (std::vector<Delivery>{{0ms, {MIDIEvent::start()}, 2, {}},
                                               {0ms, {MIDIEvent::timingClock()}, 1, {}}}));
}

}  // namespace
}  // namespace midikit::core
