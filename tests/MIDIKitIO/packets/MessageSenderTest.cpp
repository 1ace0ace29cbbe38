#include "MIDIKitIO/packets/MessageSender.hpp"

#include <exception>
#include <functional>
#include <string>
#include <vector>

#include "MIDIKitInternals/RadixText.hpp"
#include "tests/MIDIKitCore/Events.hpp"
#include "tests/MIDIKitIO/MIDITestFixture.hpp"

namespace midikit::io {
namespace {

using namespace core::literals;
using core::bytesOf;
using core::MIDIEvent;
using internals::hexText;
using Version = CoreMIDIAPIVersion;
using Lines = std::vector<std::string>;

/// Writes each list down, and when it was made. A millisecond goes by with each, and the third one fails.
class Recorder final : public internal::MessageSender {
 public:
  Recorder(karvex::foundation::VirtualRuntime& runtime, const MIDIService& service, Version api)
      : MessageSender(service, api), runtime_(runtime), start_(service.machAbsoluteTime()) {}

  void sendPacketList(const MIDIPacketList& list) override {
    std::string line("bytes");
    for (std::size_t i = 0; i < list.packetCount(); ++i) {
      const auto packet = list.packet(i);
      const auto size = packet.bytes.size();
      line += momentOf(packet.timeStamp) +
              (size > 9 ? std::to_string(size) : hexText(packet.bytes, {.width = 2}));
    }
    write(line);
  }
  void sendEventList(const MIDIEventList& list) override {
    const auto& packet = list.packets.front();
    const auto words = std::span(packet.words).first(packet.wordCount);
    write("protocol " + std::to_string(static_cast<int>(list.protocol)) + momentOf(packet.timeStamp) +
          (words.size() > 4 ? std::to_string(words.size()) : hexText(words, {.width = 8})));
  }

  Lines lines;

 private:
  std::string momentOf(std::uint64_t timeStamp) const {
    return " | " + std::to_string((timeStamp - start_) / 1'000'000) + ": ";
  }
  void write(const std::string& line) {
    lines.push_back(line);
    runtime_.clock().sleepFor(std::chrono::milliseconds(1));
    if (lines.size() == 3) {
      throw core::MIDIIOError::osStatus(-10831);
    }
  }

  karvex::foundation::VirtualRuntime& runtime_;
  std::uint64_t start_;
};

const MIDIEvent note = MIDIEvent::noteOn(60_u7, core::ChanVoice7Bit16BitValue::midi1(64_u7), 0_u4);
const MIDIEvent clock = MIDIEvent::timingClock();
const MIDIEvent noBytes = MIDIEvent::noteManagement(60_u7, core::OptionFlags(), 0_u4);
const MIDIEvent rpn = MIDIEvent::rpn(core::RegisteredController::pitchBendSensitivity(2_u7, 1_u7), 0_u4);

MIDIEvent dump(std::size_t size) {
  return *MIDIEvent::sysEx7(core::SysExManufacturer::oneByte(0x41_u7), core::sevenBitBytes(size));
}
/// `count` messages that have `size` bytes together.
std::vector<core::Bytes> messages(std::size_t count, std::size_t size) {
  std::vector<core::Bytes> messages(count, core::Bytes(1));
  messages.back().resize(size - count + 1);
  return messages;
}
std::vector<std::uint32_t> words(std::size_t count) {
  return std::vector<std::uint32_t>(count, 0x20903C40);
}

using MessageSenderTest = MIDITestFixture;

TEST_F(MessageSenderTest, MakesTheListsOfItsInterface) {
  constexpr auto legacy = Version::legacyCoreMIDI();
  constexpr auto midi1 = Version::newCoreMIDI(core::MIDIProtocolVersion::midi1_0);
  constexpr auto midi2 = Version::newCoreMIDI(core::MIDIProtocolVersion::midi2_0);
  const std::string portError("An invalid MIDIPortRef was passed. (kMIDIInvalidPort)");
  const std::string notHere("Internal inconsistency: New Core MIDI API is not accessible on this platform.");
  struct Case {
    std::string what;
    Version api;
    std::function<void(Recorder&)> send;
    Lines expected;
    PlatformVersion platform{13, 0};
  };
  const Case cases[] = {
      {"an event in bytes", legacy, [](auto& to) { to.sendEvent(note); }, {"bytes | 0: 90 3C 40"}},
      {"no bytes make an empty packet", legacy, [](auto& to) { to.sendEvent(noBytes); }, {"bytes | 0: "}},
      {"a long message, whole", legacy, [](auto& to) { to.sendEvent(dump(70'000)); }, {"bytes | 0: 70003"}},
      {"events share a list",
       legacy,
       [](auto& to) { to.sendEvents(std::vector{note, noBytes, clock}); },
       {"bytes | 0: 90 3C 40 | 0:  | 0: F8"}},
      {"a dump among them: one each",
       legacy,
       [](auto& to) { to.sendEvents(std::vector{note, dump(1)}); },
       {"bytes | 0: 90 3C 40", "bytes | 1: F0 41 00 F7"}},
      {"no events", legacy, [](auto& to) { to.sendEvents({}); }, {"bytes"}},
      {"the largest list",
       legacy,
       [](auto& to) { to.sendRawMessages(messages(2, 65'512)); },
       {"bytes | 0: 00 | 0: 65511"}},
      {"one byte more",
       legacy,
       [](auto& to) { to.sendRawMessages(messages(2, 65'513)); },
       {"Malformed: Data is too large (65537 bytes). Maximum size is 65536 bytes."}},
      {"words in the older interface",
       legacy,
       [](auto& to) { to.sendUniversalWords(words(1)); },
       {"Internal inconsistency: Universal MIDI Packet words cannot be sent using old Core MIDI API."}},
      {"MIDI 2.0",
       midi2,
       [](auto& to) { to.sendEvents(std::vector{note, clock}); },
       {"protocol 2 | 0: 40903C00 80000000", "protocol 2 | 1: 10F80000"}},
      {"a list for each packet, up to a failure",
       midi1,
       [](auto& to) { to.sendEvents(std::vector{rpn, note}); },
       {"protocol 1 | 0: 20B06500", "protocol 1 | 1: 20B06400", "protocol 1 | 2: 20B00602", portError}},
      {"a dump in pieces",
       midi2,
       [](auto& to) { to.sendEvent(dump(7)); },
       {"protocol 2 | 0: 30164100 050A0F14", "protocol 2 | 1: 3032191E 00000000"}},
      {"64 words", midi1, [](auto& to) { to.sendUniversalWords(words(64)); }, {"protocol 1 | 0: 64"}},
      {"65 words",
       midi1,
       [](auto& to) { to.sendUniversalWords(words(65)); },
       {"Malformed: A Universal MIDI Packet cannot contain more than 64 UInt32 words."}},
      {"no words",
       midi1,
       [](auto& to) { to.sendUniversalWords({}); },
       {"Malformed: A Universal MIDI Packet cannot contain zero UInt32 words."}},
      {"bytes in the newer interface",
       midi1,
       [](auto& to) { to.sendRawMessage(bytesOf("F8")); },
       {"Internal inconsistency: Raw bytes cannot be sent using new Core MIDI API."}},
      {"and several",
       midi2,
       [](auto& to) { to.sendRawMessages({}); },
       {"Internal inconsistency: Raw bytes cannot be sent using new Core MIDI API."}},
      {"too old a platform", midi1, [](auto& to) { to.sendEvent(note); }, {notHere}, {10, 15}},
  };
  for (const auto& [what, api, send, expected, platform] : cases) {
    const auto itsService = serviceOf(platform);
    Recorder recorder(runtime, *itsService, api);
    try {
      send(recorder);
    } catch (const std::exception& error) {
      recorder.lines.emplace_back(error.what());
    }
    EXPECT_EQ(recorder.lines, expected) << what;
  }
}

}  // namespace
}  // namespace midikit::io
