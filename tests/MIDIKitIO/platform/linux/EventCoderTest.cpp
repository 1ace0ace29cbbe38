#include "MIDIKitIO/platform/linux/EventCoder.hpp"

#include <gmock/gmock.h>

#include "MIDIKitIO/platform/linux/SysExPacer.hpp"

namespace midikit::io::alsa {
namespace {

using namespace std::chrono_literals;
using Bytes = std::vector<std::uint8_t>;
using testing::ElementsAre;

/// The bytes as they come back, and how many events they were on the way.
std::pair<Bytes, int> throughEvents(EventEncoder& encoder, const Bytes& bytes) {
  EventDecoder decoder;
  std::pair<Bytes, int> result;
  std::span<const std::uint8_t> rest = bytes;
  while (const auto event = encoder.next(rest)) {
    decoder.decode(*event, result.first);
    ++result.second;
  }
  return result;
}

TEST(EventCoderTest, EveryStatusComesBackAsItWas) {
  for (int status = 0x80; status <= 0xFF; ++status) {
    const bool isUndefined = status == 0xF4 || status == 0xF5 || status == 0xF9 || status == 0xFD;
    if (status == 0xF0 || status == 0xF7 || isUndefined) {
      continue;
    }
    const bool isShort = (status >= 0xC0 && status < 0xE0) || status == 0xF1 || status == 0xF3;
    const bool isBare = status >= 0xF4;
    Bytes message = {static_cast<std::uint8_t>(status)};
    if (!isBare) {
      message.push_back(0x12);
    }
    if (!isBare && !isShort) {
      message.push_back(0x34);
    }
    EventEncoder encoder;
    EXPECT_EQ(throughEvents(encoder, message), std::pair(message, 1)) << status;
  }
}

TEST(EventCoderTest, SystemExclusiveMessagesOfAnyLengthAreCutIntoPieces) {
  for (const std::size_t length : {2U, 3U, 255U, 256U, 257U, 512U, 1000U, 65536U}) {
    Bytes message(length, 0x11);
    message.front() = 0xF0;
    message.back() = 0xF7;
    EventEncoder encoder;
    const auto [bytes, events] = throughEvents(encoder, message);
    EXPECT_TRUE(bytes == message) << length;
    EXPECT_EQ(static_cast<std::size_t>(events), (length + sysExPiece - 1) / sysExPiece) << length;
  }
}

TEST(EventCoderTest, AMessageMayGoOverSeveralCalls) {
  EventEncoder encoder;
  EXPECT_THAT(throughEvents(encoder, {0xF0, 1, 2}).first, ElementsAre());
  EXPECT_THAT(throughEvents(encoder, {0xF8, 3, 0xF7, 0x90, 60}).first,
              ElementsAre(0xF8, 0xF0, 1, 2, 3, 0xF7));
  EXPECT_THAT(throughEvents(encoder, {1, 61, 2}).first, ElementsAre(0x90, 60, 1, 0x90, 61, 2));
  EXPECT_THAT(throughEvents(encoder, {0xF0, 1}).first, ElementsAre());
  EXPECT_THAT(throughEvents(encoder, {0x91, 60, 1}).first, ElementsAre(0x91, 60, 1));
  EXPECT_THAT(throughEvents(encoder, {61, 2}).first, ElementsAre(0x91, 61, 2));
}

TEST(EventCoderTest, EventsFromOtherProgramsAreCutToWhatMidiHas) {
  EventDecoder decoder;
  Bytes bytes;
  snd_seq_event_t event{};
  event.type = SND_SEQ_EVENT_NOTEON;
  event.data.note = {.channel = 0xFF, .note = 0xFF, .velocity = 0xFF};
  decoder.decode(event, bytes);
  event = {};
  event.type = SND_SEQ_EVENT_PITCHBEND;
  event.data.control.value = 1 << 30;
  decoder.decode(event, bytes);
  event = {};
  event.type = SND_SEQ_EVENT_CLIENT_START;
  decoder.decode(event, bytes);
  event.type = SND_SEQ_EVENT_SYSEX;  // Claims a length, but isn't of the kind that has one.
  event.data.ext = {.len = 400, .ptr = nullptr};
  decoder.decode(event, bytes);
  ASSERT_EQ(bytes.size(), 6U);
  EXPECT_THAT(Bytes(bytes.begin(), bytes.begin() + 3), ElementsAre(0x9F, 0x7F, 0x7F));
  EXPECT_EQ(bytes[3], 0xE0);
  EXPECT_LT(bytes[4] | bytes[5], 0x80);
}

TEST(SysExPacerTest, LetsTheAllowanceThroughAndThenKeepsTheRate) {
  SysExPacer pacer;
  const SysExPacer::TimePoint start{100s};
  SysExPacer::TimePoint last{};
  for (int piece = 0; piece < 8; ++piece) {  // 2048 bytes
    EXPECT_EQ(pacer.next(start, 256, 1024), start) << piece;
  }
  for (int piece = 1; piece <= 8; ++piece) {
    last = pacer.next(start, 256, 1024);
    EXPECT_EQ(last, start + piece * 250ms) << piece;
  }
  EXPECT_EQ(pacer.next(start, 0, 1024), last) << "nothing overtakes";
  EXPECT_EQ(pacer.next(start + 1h, 256, 1024), start + 1h) << "the device has long taken all";
}

}  // namespace
}  // namespace midikit::io::alsa
