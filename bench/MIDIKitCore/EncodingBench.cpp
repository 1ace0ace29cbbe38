// Measures the encoding of events to MIDI 1.0 bytes and to packets of both protocols, and the scaling of
// values, beside a bound that only walks over the same events and counts what they'd take. Prints ratios and
// never fails by the clock.
//
// Run: midi_encoding_bench [ROUNDS]

#include <array>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "MIDIKitCore/MIDIEvent.hpp"
#include "bench/MIDIKitCore/Measure.hpp"
#include "bench/MIDIKitCore/ScalingBench.hpp"

namespace midikit::bench {
namespace {

using namespace core;

constexpr std::size_t eventCount = 4096;
constexpr int usualRounds = 301;

class Stream {
 public:
  UInt7 data() { return UInt7::unchecked(static_cast<std::uint8_t>(random_() & 0x7F)); }
  UInt4 channel() { return UInt4::unchecked(static_cast<std::uint8_t>(random_() & 0xF)); }
  unsigned number(unsigned below) { return static_cast<unsigned>(random_()) % below; }
  std::uint32_t word() { return static_cast<std::uint32_t>(random_()); }

  MIDIEvent midi1Voice() {
    switch (number(8)) {
      case 0:
      case 1:
      case 2:
        return MIDIEvent::noteOn(data(), ChanVoice7Bit16BitValue::midi1(data()), channel());
      case 3:
      case 4:
        return MIDIEvent::noteOff(data(), ChanVoice7Bit16BitValue::midi1(data()), channel());
      case 5:
        return MIDIEvent::pitchBend(ChanVoice14Bit32BitValue::midi1(UInt14(UInt7Pair{data(), data()})),
                                    channel());
      case 6:
        return MIDIEvent::pressure(ChanVoice7Bit32BitValue::midi1(data()), channel());
      default:
        return MIDIEvent::cc(data(), ChanVoice7Bit32BitValue::midi1(data()), channel());
    }
  }

  MIDIEvent midi2Voice() {
    switch (number(8)) {
      case 0:
      case 1:
      case 2:
        return MIDIEvent::noteOn(data(), ChanVoice7Bit16BitValue::midi2(static_cast<std::uint16_t>(word())),
                                 channel());
      case 3:
      case 4:
        return MIDIEvent::noteOff(data(), ChanVoice7Bit16BitValue::midi2(static_cast<std::uint16_t>(word())),
                                  channel());
      case 5:
        return MIDIEvent::pitchBend(ChanVoice14Bit32BitValue::midi2(word()), channel());
      case 6:
        return MIDIEvent::notePressure(data(), ChanVoice7Bit32BitValue::midi2(word()), channel());
      default:
        return MIDIEvent::cc(data(), ChanVoice7Bit32BitValue::midi2(word()), channel());
    }
  }

  MIDIEvent mixed() {
    switch (number(16)) {
      case 0:
      case 1:
      case 2:
        return MIDIEvent::timingClock();
      case 3:
        return MIDIEvent::programChange(data(), Bank::bankSelect(UInt14(UInt7Pair{data(), data()})),
                                        channel());
      case 4:
        return MIDIEvent::rpn(RegisteredController::pitchBendSensitivity(data(), data()), channel());
      case 5:
        return MIDIEvent::songPositionPointer(UInt14(UInt7Pair{data(), data()}));
      default:
        return number(2) == 0 ? midi1Voice() : midi2Voice();
    }
  }

 private:
  std::mt19937_64 random_{20260101};
};

/// What an event takes in each form, by its case.
struct Sizes {
  std::uint8_t bytes;
  std::uint8_t words1;
  std::uint8_t words2;
};
constexpr std::array<Sizes, MIDIEvent::kindCount> sizesByKind = [] {
  std::array<Sizes, MIDIEvent::kindCount> sizes{};
  sizes.fill({.bytes = 3, .words1 = 1, .words2 = 2});
  const auto of = [&sizes](MIDIEvent::Kind kind) -> Sizes& { return sizes[static_cast<std::size_t>(kind)]; };
  of(MIDIEvent::Kind::pressure).bytes = 2;
  of(MIDIEvent::Kind::programChange).bytes = 8;
  of(MIDIEvent::Kind::rpn) = {.bytes = 12, .words1 = 4, .words2 = 2};
  of(MIDIEvent::Kind::songPositionPointer) = {.bytes = 3, .words1 = 1, .words2 = 1};
  of(MIDIEvent::Kind::timingClock) = {.bytes = 1, .words1 = 1, .words2 = 1};
  return sizes;
}();

std::size_t counted(const std::vector<MIDIEvent>& events, std::uint8_t Sizes::* size) {
  std::size_t sum = 0;
  for (const MIDIEvent& event : events) {
    sum += sizesByKind[static_cast<std::size_t>(event.kind())].*size;
  }
  return sum;
}

/// The least that any encoder has to do: it looks at the case of each event and puts out as much as its
/// message has, here some of the event's own bytes as they are. `room` is what an event needs at most.
template <std::size_t room, class Unit>
void moveAsMuch(const std::vector<MIDIEvent>& events, std::uint8_t Sizes::* size, std::vector<Unit>& into) {
  Unit* end = into.data();
  for (const MIDIEvent& event : events) {
    std::memcpy(end, static_cast<const void*>(&event), room * sizeof(Unit));
    end += sizesByKind[static_cast<std::size_t>(event.kind())].*size;
  }
  keep(end);
}

void compare(const std::string& title, const std::vector<MIDIEvent>& events, int rounds) {
  const std::size_t count = events.size();
  Series counting("events counted, nothing put out", count);
  Series byteBound("as many bytes moved", count);
  Series word1Bound("as many words moved, MIDI 1.0", count);
  Series word2Bound("as many words moved, MIDI 2.0", count);
  Series bytes("to bytes, all at once", count);
  Series bytesOneByOne("to bytes, one by one", count);
  Series packets1("to MIDI 1.0 packets, all at once", count);
  Series packets2("to MIDI 2.0 packets, all at once", count);
  Series packets1OneByOne("to MIDI 1.0 packets, one by one", count);
  Series packets2OneByOne("to MIDI 2.0 packets, one by one", count);
  std::vector<std::uint8_t> movedBytes(count * MIDIEvent::maximumShortBytes + 16);
  std::vector<std::uint32_t> movedWords(count * MIDIEvent::maximumShortWords + 16);
  std::vector<std::uint8_t> byteBuffer;
  std::vector<std::uint32_t> wordBuffer;
  const auto encodeWords = [&](MIDIProtocolVersion protocol) {
    wordBuffer.clear();
    appendUMPWords(events, protocol, wordBuffer);
    keep(wordBuffer.data());
  };
  const auto encodeWordsOneByOne = [&](MIDIProtocolVersion protocol) {
    wordBuffer.clear();
    for (const MIDIEvent& event : events) {
      event.appendUMPWords(protocol, wordBuffer);
    }
    keep(wordBuffer.data());
  };
  for (int round = 0; round < rounds; ++round) {
    counting.measure([&] {
      const std::size_t sum = counted(events, &Sizes::bytes);
      keep(&sum);
    });
    byteBound.measure([&] { moveAsMuch<4>(events, &Sizes::bytes, movedBytes); });
    word1Bound.measure([&] { moveAsMuch<1>(events, &Sizes::words1, movedWords); });
    word2Bound.measure([&] { moveAsMuch<2>(events, &Sizes::words2, movedWords); });
    bytes.measure([&] {
      byteBuffer.clear();
      appendMIDI1Bytes(events, byteBuffer);
      keep(byteBuffer.data());
    });
    bytesOneByOne.measure([&] {
      byteBuffer.clear();
      for (const MIDIEvent& event : events) {
        event.appendMIDI1Bytes(byteBuffer);
      }
      keep(byteBuffer.data());
    });
    packets1.measure([&] { encodeWords(MIDIProtocolVersion::midi1_0); });
    packets1OneByOne.measure([&] { encodeWordsOneByOne(MIDIProtocolVersion::midi1_0); });
    packets2.measure([&] { encodeWords(MIDIProtocolVersion::midi2_0); });
    packets2OneByOne.measure([&] { encodeWordsOneByOne(MIDIProtocolVersion::midi2_0); });
  }
  printHeader(title, rounds);
  printBound(counting);
  const auto printAll = [](const Series& bound, const Series& atOnce, const Series& oneByOne) {
    printBound(bound);
    printAgainst(atOnce, bound, "(wanted: at most 5)");
    printAgainst(oneByOne, bound, "");
  };
  printAll(byteBound, bytes, bytesOneByOne);
  printAll(word1Bound, packets1, packets1OneByOne);
  printAll(word2Bound, packets2, packets2OneByOne);
}

template <class Make>
std::vector<MIDIEvent> made(Make make) {
  Stream stream;
  std::vector<MIDIEvent> events;
  for (std::size_t i = 0; i < eventCount; ++i) {
    events.push_back((stream.*make)());
  }
  return events;
}

}  // namespace
}  // namespace midikit::bench

int main(int count, char** arguments) {
  using namespace midikit::bench;
  const int rounds = count == 2 ? std::max(1, std::stoi(arguments[1])) : usualRounds;
  compare("Channel voice with MIDI 1.0 values", made(&Stream::midi1Voice), rounds);
  compare("Channel voice with MIDI 2.0 values", made(&Stream::midi2Voice), rounds);
  compare("A mixed stream", made(&Stream::mixed), rounds);
  compareScaling(rounds);
}
