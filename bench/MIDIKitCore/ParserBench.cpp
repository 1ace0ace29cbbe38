// Measures the parsers of MIDI 1.0 byte streams and of Universal MIDI Packets beside a bound that only counts
// the messages of the same input, and the byte parser beside alsa-lib's event coder. Prints times and
// allocations for an event, and ratios; never fails by the clock.
//
// Run: midi_parser_bench [ROUNDS]

#include <alsa/asoundlib.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "MIDIKitCore/MIDI1Parser.hpp"
#include "MIDIKitCore/MIDI2Parser.hpp"
#include "MIDIKitCore/wire/UMPWords.hpp"
#include "bench/MIDIKitCore/Measure.hpp"
#include "bench/MIDIKitCore/MessageCounting.hpp"
#include "tests/AllocationCounter.hpp"

namespace midikit::bench {
namespace {

using namespace core;
using Bytes = std::vector<std::uint8_t>;
using Packets = std::vector<Bytes>;

constexpr int usualRounds = 301;

class Generator {
 public:
  unsigned below(unsigned bound) { return static_cast<unsigned>(random_()) % bound; }
  std::uint8_t byte(unsigned base, unsigned count) { return static_cast<std::uint8_t>(base + below(count)); }
  std::uint8_t data() { return byte(0, 0x80); }

 private:
  std::mt19937 random_{1};
};

void addChannelVoice(Bytes& packet, Generator& random, std::uint8_t status, int messages) {
  const bool hasTwo = status >> 5 != 0xC0 >> 5;
  for (int i = 0; i < messages; ++i) {
    packet.push_back(random.data());
    if (hasTwo) {
      packet.push_back(random.data());
    }
  }
}

/// Chords, runs of controllers and bends: eight messages under each status.
Packets denseStream() {
  Generator random;
  Packets packets(32);
  for (auto& packet : packets) {
    for (int run = 0; run < 32; ++run) {
      static constexpr std::uint8_t statuses[] = {0x90, 0x90, 0x90, 0x80, 0xB0, 0xE0};
      packet.push_back(static_cast<std::uint8_t>(statuses[random.below(6)] + random.below(16)));
      addChannelVoice(packet, random, packet.back(), 8);
    }
  }
  return packets;
}

void addSysEx(Bytes& packet, Generator& random, unsigned longest) {
  packet.insert(packet.end(), {0xF0, 0x41});
  const auto length = random.below(longest);
  for (unsigned i = 0; i < length; ++i) {
    packet.push_back(random.data());
  }
  packet.push_back(0xF7);
}

/// What a sequencer with several devices sends: runs of one to eight messages of any kind, a clock in or
/// between one in twelve messages, and one system exclusive message in forty, of up to 128 bytes.
Packets mixedStream() {
  Generator random;
  Packets packets(32);
  for (auto& packet : packets) {
    for (int i = 0; i < 64; ++i) {
      const auto status = random.byte(0x80, 0x70);
      packet.push_back(status);
      for (unsigned left = 1 + random.below(8); left > 0; --left) {
        Bytes message;
        addChannelVoice(message, random, status, 1);
        if (random.below(12) == 0) {
          message.insert(message.begin() + random.below(static_cast<unsigned>(message.size()) + 1), 0xF8);
        }
        packet.insert(packet.end(), message.begin(), message.end());
      }
      if (random.below(9) == 0) {
        addSysEx(packet, random, 128);
      } else if (random.below(9) == 0) {
        packet.insert(packet.end(), {0xF2, random.data(), random.data()});
      }
    }
  }
  return packets;
}

/// The hardest for anybody who guesses what comes next: messages of all kinds, each under its own status.
Packets shuffledStream() {
  Generator random;
  Packets packets(32);
  for (auto& packet : packets) {
    for (int i = 0; i < 256; ++i) {
      packet.push_back(random.byte(0x80, 0x70));
      addChannelVoice(packet, random, packet.back(), 1);
    }
  }
  return packets;
}

Packets dumps() {
  Generator random;
  Packets packets(16);
  for (auto& packet : packets) {
    packet.insert(packet.end(), {0xF0, 0x41});
    while (packet.size() < 4095) {
      packet.push_back(random.data());
    }
    packet.push_back(0xF7);
  }
  return packets;
}

std::size_t countMessages(const Packets& packets) {
  ByteStreamCounter counter;
  for (const auto& packet : packets) {
    counter.count(packet);
  }
  return counter.messages();
}

/// The coder of the platform's MIDI library, which gives its events one at a time.
class AlsaCoder {
 public:
  AlsaCoder() {
    if (snd_midi_event_new(8192, &coder_) != 0) {
      std::abort();
    }
  }
  ~AlsaCoder() { snd_midi_event_free(coder_); }
  AlsaCoder(const AlsaCoder&) = delete;
  AlsaCoder& operator=(const AlsaCoder&) = delete;

  std::size_t encode(const Packets& packets) {
    std::size_t events = 0;
    for (const auto& packet : packets) {
      std::span<const std::uint8_t> rest(packet);
      while (!rest.empty()) {
        snd_seq_event_t event;
        const auto used = snd_midi_event_encode(coder_, rest.data(), static_cast<long>(rest.size()), &event);
        if (used <= 0) {
          std::abort();
        }
        rest = rest.subspan(static_cast<std::size_t>(used));
        keep(&event);
        events += event.type != SND_SEQ_EVENT_NONE ? 1 : 0;
      }
    }
    return events;
  }

 private:
  snd_midi_event_t* coder_ = nullptr;
};

void require(bool holds) {
  if (!holds) {
    fmt::print(stderr, "The programs don't find the same messages.\n");
    std::abort();
  }
}

void measureBytes(const std::string& title, const Packets& packets, int rounds,
                  const std::string& wantedOfAlsa) {
  const auto count = countMessages(packets);
  AlsaCoder coder;
  require(coder.encode(packets) == count);
  MIDI1Parser parser;
  std::vector<MIDIEvent> events;
  std::size_t parsed = 0;
  const auto parse = [&] {
    parsed = 0;
    for (const auto& packet : packets) {
      events.clear();
      parser.parse(packet, UInt4(), events);
      keep(events.data());
      parsed += events.size();
    }
  };
  parse();
  require(parsed == count);
  const auto before = karvex::tests::allocationsSoFar();
  parse();
  const auto allocated =
      static_cast<double>(karvex::tests::allocationsSoFar() - before) / static_cast<double>(count);

  Series bound("count the messages", count);
  Series alsa("alsa-lib snd_midi_event_encode", count);
  Series ours("MIDI1Parser::parse", count);
  for (int round = 0; round < rounds; ++round) {
    bound.measure([&] { require(countMessages(packets) == count); });
    alsa.measure([&] { require(coder.encode(packets) == count); });
    ours.measure(parse);
  }
  printHeader(title, rounds);
  printBound(bound);
  printAgainst(alsa, bound, "");
  printAgainst(ours, bound, "");
  fmt::print("  {:<44} {:>10.3f}\n", "  allocations for an event", allocated);
  fmt::print("  {:<44} {:>10.3f}    {:>10.3f}    {}\n", "  of alsa-lib's time", ours.median() / alsa.median(),
             ours.fastest() / alsa.fastest(), wantedOfAlsa);
}

/// The packets of 512 messages made by `make`.
template <typename Make>
Packets packetsOf(Make make) {
  Generator random;
  Packets packets;
  for (int i = 0; i < 512; ++i) {
    for (const auto& packet : MIDIEvent(make(random)).umpWords(MIDIProtocolVersion::midi2_0)) {
      packets.push_back(umpBytes(packet.words()));
    }
  }
  return packets;
}

Packets midi1ChannelVoicePackets() {
  Generator random;
  Packets packets;
  for (int i = 0; i < 512; ++i) {
    packets.push_back({0x20, random.byte(0x80, 0x70), random.data(), random.data()});
  }
  return packets;
}

Packets midi2ChannelVoicePackets() {
  Generator random;
  Packets packets;
  while (packets.size() < 512) {
    const auto opcode = random.byte(0x0, 0x10);
    if (opcode == 0x7) {
      continue;
    }
    packets.push_back({0x40, static_cast<std::uint8_t>(opcode << 4), random.data(), random.data()});
    for (int i = 0; i < 4; ++i) {
      packets.back().push_back(random.data());
    }
  }
  return packets;
}

template <std::size_t size>
SysEx7 sysEx7(Generator& random) {
  Bytes data(size);
  for (auto& byte : data) {
    byte = random.data();
  }
  return *SysEx7::make(SysExManufacturer::oneByte(UInt7(0x41)), data);
}

template <std::size_t size>
SysEx8 sysEx8(Generator& random) {
  Bytes data(size, random.data());
  return SysEx8(SysExManufacturer::oneByte(UInt7(0x41)), SysExData(data));
}

void measurePackets(const std::string& title, const Packets& packets, int rounds) {
  const auto countAll = [&packets] {
    std::size_t count = 0;
    for (const auto& packet : packets) {
      count += endsMessage(packet) ? 1U : 0U;
    }
    return count;
  };
  const auto count = countAll();
  MIDI2Parser parser;
  std::vector<MIDIEvent> events;
  const auto parse = [&] {
    events.clear();
    for (const auto& packet : packets) {
      parser.parse(packet, events);
    }
    keep(events.data());
  };
  parse();
  require(events.size() == count);
  const auto before = karvex::tests::allocationsSoFar();
  parse();
  const auto allocated =
      static_cast<double>(karvex::tests::allocationsSoFar() - before) / static_cast<double>(count);

  Series bound("count the messages", packets.size());
  Series ours("MIDI2Parser::parse", packets.size());
  for (int round = 0; round < rounds; ++round) {
    bound.measure([&] { require(countAll() == count); });
    ours.measure(parse);
  }
  printHeader(title + ", by packet", rounds);
  printBound(bound);
  printAgainst(ours, bound, "(at most 6)");
  fmt::print("  {:<44} {:>10.3f}\n", "  allocations for an event", allocated);
}

}  // namespace
}  // namespace midikit::bench

int main(int argc, char** argv) {
  using namespace midikit::bench;
  using namespace midikit::core;
  const int rounds = argc > 1 ? std::atoi(argv[1]) : usualRounds;
  measureBytes("Dense stream with running status", denseStream(), rounds, "(at most 0.25)");
  measureBytes("Mixed stream", mixedStream(), rounds, "(at most 0.4)");
  measureBytes("Shuffled messages without running status", shuffledStream(), rounds, "");
  measureBytes("System exclusive dumps of 4 KiB", dumps(), rounds, "(at most 0.1)");

  measurePackets("Utility packets", packetsOf([](auto& random) { return JRClock(random.data()); }), rounds);
  measurePackets("System packets", packetsOf([](auto& random) { return SongSelect(UInt7(random.data())); }),
                 rounds);
  measurePackets("MIDI 1.0 channel voice packets", midi1ChannelVoicePackets(), rounds);
  measurePackets("MIDI 2.0 channel voice packets", midi2ChannelVoicePackets(), rounds);
  measurePackets("SysEx7 in one packet", packetsOf(sysEx7<5>), rounds);
  measurePackets("SysEx7 of 256 bytes", packetsOf(sysEx7<255>), rounds);
  measurePackets("SysEx8 in one packet", packetsOf(sysEx8<11>), rounds);
  measurePackets("SysEx8 of 256 bytes", packetsOf(sysEx8<254>), rounds);
  return 0;
}
