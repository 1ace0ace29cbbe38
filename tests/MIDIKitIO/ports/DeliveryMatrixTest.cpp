#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <variant>
#include <vector>

#include "tests/MIDIKitIO/ManagerFixture.hpp"

namespace midikit::io {
namespace {

using core::MIDIProtocolVersion;
using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint32_t>;
using Lines = std::vector<std::string>;

/// What a receiver is handed: the events of each packet that has any, and the bytes of each packet.
struct Received {
  Lines events;
  Lines raw;
};

struct Row {
  std::string description;
  std::variant<std::vector<Bytes>, Words> sent;  ///< packets of bytes; or one packet of words, of MIDI 2.0
  Received legacy;
  Received midi1;
  Received midi2;
};

std::string hex(const Bytes& bytes) {
  return fmt::format("{:02X}", fmt::join(bytes, " "));
}

/// A dump of `count` bytes for the maker 0x41, cut by hand into packets of 6 bytes.
Row sysExRow(std::size_t count) {
  Bytes body = {0x41};
  for (std::size_t place = 0; place < count; ++place) {
    body.push_back(static_cast<std::uint8_t>((place * 7 + place / 100) & 0x7F));
  }
  Lines packets;
  for (std::size_t at = 0; at < body.size(); at += 6) {
    const std::size_t size = std::min<std::size_t>(6, body.size() - at);
    const bool isFirst = at == 0;
    const bool isLast = at + size == body.size();
    Bytes packet = {0x30, static_cast<std::uint8_t>(isFirst && isLast ? 0
                                                    : isFirst         ? 0x10
                                                    : isLast          ? 0x30
                                                                      : 0x20)};
    packet[1] = static_cast<std::uint8_t>(packet[1] | size);
    packet.insert(packet.end(), body.begin() + static_cast<std::ptrdiff_t>(at),
                  body.begin() + static_cast<std::ptrdiff_t>(at + size));
    packet.resize(8);
    packets.push_back(hex(packet));
  }
  Bytes message = {0xF0};
  message.insert(message.end(), body.begin(), body.end());
  message.push_back(0xF7);
  // A text shows the first 64 bytes.
  std::string data;
  for (std::size_t place = 0; place < std::min<std::size_t>(count, 64); ++place) {
    data += fmt::format("{}0x{:02X}", place > 0 ? ", " : "", body[1 + place]);
  }
  const auto rest = count > 64 ? fmt::format(" and so on, {} bytes", count) : std::string();
  const auto text = fmt::format("sysEx7(mfr: 0x41, data: [{}]{}, group: 0x0)", data, rest);
  return {fmt::format("system exclusive, {} bytes", count),
          std::vector<Bytes>{message},
          {{text}, {hex(message)}},
          {{text}, packets},
          {{text}, packets}};
}

std::vector<Row> rows() {
  std::vector<Row> all = {
      {"a note",
       std::vector<Bytes>{{0x90, 0x3C, 0x40}},
       {{"noteOn(0x3C, vel: midi1(64), chan: 0x0, group: 0x0)"}, {"90 3C 40"}},
       {{"noteOn(0x3C, vel: midi1(64), chan: 0x0, group: 0x0)"}, {"20 90 3C 40"}},
       {{"noteOn(0x3C, vel: midi2(32768), chan: 0x0, group: 0x0)"}, {"40 90 3C 00 80 00 00 00"}}},
      {"running status: over packets where they are handed on, inside of one where they are read",
       std::vector<Bytes>{{0x80, 0x3C, 0x00}, {0x3E, 0x00, 0x40, 0x00}},
       {{"noteOff(0x3C, vel: midi1(0), chan: 0x0, group: 0x0)",
         "noteOff(0x3E, vel: midi1(0), chan: 0x0, group: 0x0), noteOff(0x40, vel: midi1(0), chan: 0x0, "
         "group: "
         "0x0)"},
        {"80 3C 00", "3E 00 40 00"}},
       {{"noteOff(0x3C, vel: midi1(0), chan: 0x0, group: 0x0)"}, {"20 80 3C 00"}},
       {{"noteOff(0x3C, vel: midi2(0), chan: 0x0, group: 0x0)"}, {"40 80 3C 00 00 00 00 00"}}},
      {"a registered parameter number",
       std::vector<Bytes>{{0xB0, 0x65, 0x00, 0xB0, 0x64, 0x00, 0xB0, 0x06, 0x40}},
       {{"cc(RPN MSB, val: midi1(0), chan: 0x0, group: 0x0), cc(RPN LSB, val: midi1(0), chan: 0x0, group: "
         "0x0), "
         "cc(Data Entry MSB, val: midi1(64), chan: 0x0, group: 0x0)"},
        {"B0 65 00 B0 64 00 B0 06 40"}},
       {{"cc(RPN MSB, val: midi1(0), chan: 0x0, group: 0x0)",
         "cc(RPN LSB, val: midi1(0), chan: 0x0, group: 0x0)",
         "cc(Data Entry MSB, val: midi1(64), chan: 0x0, group: 0x0)"},
        {"20 B0 65 00", "20 B0 64 00", "20 B0 06 40"}},
       {{"cc(RPN MSB, val: midi2(0), chan: 0x0, group: 0x0)",
         "cc(RPN LSB, val: midi2(0), chan: 0x0, group: 0x0)",
         "cc(Data Entry MSB, val: midi2(2147483648), chan: 0x0, group: 0x0)"},
        {"40 B0 65 00 00 00 00 00", "40 B0 64 00 00 00 00 00", "40 B0 06 00 80 00 00 00"}}},
      {"universal, type 0",
       Words{0x00000000},
       {},
       {{"noOp(group: 0x0)"}, {"00 00 00 00"}},
       {{"noOp(group: 0x0)"}, {"00 00 00 00"}}},
      {"universal, type 1",
       Words{0x11F80000},
       {{"timingClock(group: 0x0)"}, {"F8"}},
       {{"timingClock(group: 0x1)"}, {"11 F8 00 00"}},
       {{"timingClock(group: 0x1)"}, {"11 F8 00 00"}}},
      {"universal, type 2 in a list of MIDI 2.0",
       Words{0x20C30500},
       {{"prgChange(5, bank: noBankSelect, chan: 0x3, group: 0x0)"}, {"C3 05"}},
       {{"prgChange(5, bank: noBankSelect, chan: 0x3, group: 0x0)"}, {"20 C3 05 00"}},
       {{"prgChange(5, bank: noBankSelect, chan: 0x3, group: 0x0)"}, {"20 C3 05 00"}}},
      {"universal, type 4 with what MIDI 1.0 lacks",
       Words{0x40003C07, 0x80000000},
       {},
       {},
       {{"noteCC(note: 0x3C, controller: registered(7), val: midi2(2147483648), chan: 0x0, group: 0x0)"},
        {"40 00 3C 07 80 00 00 00"}}},
      {"universal, type 5, and a type that ends the packet before a clock",
       Words{0x50034100, 0x01000000, 0, 0, 0x60000000, 0x10F80000},
       {{"timingClock(group: 0x0)"}, {"F8"}},
       {{"sysEx8(mfr: 0x01, data: [], streamID: 0x41, group: 0x0)"},
        {"50 03 41 00 01 00 00 00 00 00 00 00 00 00 00 00"}},
       {{"sysEx8(mfr: 0x01, data: [], streamID: 0x41, group: 0x0)"},
        {"50 03 41 00 01 00 00 00 00 00 00 00 00 00 00 00"}}},
      {"system exclusive without a byte",
       std::vector<Bytes>{{0xF0, 0xF7}},
       {{}, {"F0 F7"}},
       {{}, {"30 00 00 00 00 00 00 00"}},
       {{}, {"30 00 00 00 00 00 00 00"}}},
  };
  for (const std::size_t count : {0U, 5U, 6U, 11U, 300U, 70U * 1024U}) {
    all.push_back(sysExRow(count));
  }
  return all;
}

class Recorder final : public ReceivesMIDIEvents {
 public:
  explicit Recorder(Lines& lines) : lines_(lines) {}
  void eventsReceived(std::span<const core::MIDIEvent> events, std::uint64_t timeStamp,
                      const MIDIPacketSource& source) override {
    std::string line;
    for (const auto& event : events) {
      line += (line.empty() ? "" : ", ") + event.debugDescription();
    }
    lines_.push_back(line + fmt::format(" timeStamp:{}", timeStamp) +
                     (source ? fmt::format(" source:\"{}\"", source->displayName) : ""));
  }

 private:
  Lines& lines_;
};

/// A receiver of each kind, whose lines are those of the logging receivers.
struct Receiver {
  const char* name;
  bool isRaw;
  MIDIReceiver receiver;
};

std::vector<Receiver> receivers(Lines& lines, const std::shared_ptr<Recorder>& recorder) {
  const auto write = [&lines](const std::string& line) { lines.push_back(line); };
  const auto writePacket = [&lines](const AnyMIDIPacket& packet) {
    lines.push_back(hex({packet.bytes().begin(), packet.bytes().end()}) +
                    fmt::format(" timeStamp:{}", packet.timeStamp()) +
                    (packet.source() ? fmt::format(" source:\"{}\"", packet.source()->displayName) : ""));
  };
  const auto events = MIDIReceiver::events(
      {},
      [recorder](std::span<const core::MIDIEvent> received, std::uint64_t timeStamp,
                 const MIDIPacketSource& source) { recorder->eventsReceived(received, timeStamp, source); });
  return {{"group", false, MIDIReceiver::group({MIDIReceiver::rawDataLogging(), events})},
          {"events", false, events},
          {"eventsLogging", false, MIDIReceiver::eventsLogging({}, write)},
          {"rawData", true, MIDIReceiver::rawData(writePacket)},
          {"rawDataLogging", true, MIDIReceiver::rawDataLogging(write)},
          {"strong", false, MIDIReceiver::strong(recorder, {})},
          {"weak", false, MIDIReceiver::weak(recorder, {})}};
}

class DeliveryMatrixTest : public ManagerFixture {
 protected:
  /// From the device's source, or from another program to the virtual input.
  void send(const Row& row, bool toInput) {
    constexpr std::uint64_t time = 5;
    if (const auto* packets = std::get_if<std::vector<Bytes>>(&row.sent)) {
      for (const auto& bytes : *packets) {
        MIDIPacketList list(MIDIPacketList::headerSize + MIDIPacketList::packetHeaderSize + bytes.size());
        ASSERT_TRUE(list.add(time, bytes));
        ASSERT_EQ(toInput ? service->MIDISend(port, input(), list) : service->sendFromEquipment(source, list),
                  noErr);
      }
      return;
    }
    const auto& words = std::get<Words>(row.sent);
    MIDIEventPacket packet{.timeStamp = time, .wordCount = static_cast<std::uint32_t>(words.size())};
    std::ranges::copy(words, packet.words.begin());
    MIDIEventList list{.protocol = MIDIProtocolID::midi2_0};
    list.packets.push_back(packet);
    ASSERT_EQ(
        toInput ? service->MIDISendEventList(port, input(), list) : service->sendFromEquipment(source, list),
        noErr);
  }
  MIDIObjectRef input() const { return *manager->managedInputs().at("in")->coreMIDIInputPortRef(); }

  MIDIObjectRef source = addSource("keyboard", 77);
  MIDIObjectRef port = [this] {
    MIDIObjectRef made = 0;
    EXPECT_EQ(service->MIDIOutputPortCreate(manager->coreMIDIClientRef(), "other", made), noErr);
    return made;
  }();
};

TEST_F(DeliveryMatrixTest, EveryReceiverIsHandedWhatWasSentInTheFormOfItsInterface) {
  const std::pair<CoreMIDIAPIVersion, Received Row::*> interfaces[] = {
      {CoreMIDIAPIVersion::legacyCoreMIDI(), &Row::legacy},
      {CoreMIDIAPIVersion::newCoreMIDI(MIDIProtocolVersion::midi1_0), &Row::midi1},
      {CoreMIDIAPIVersion::newCoreMIDI(MIDIProtocolVersion::midi2_0), &Row::midi2},
  };
  const auto table = rows();
  for (const auto& [api, column] : interfaces) {
    manager->setPreferredAPI(api);
    Lines lines;
    const auto recorder = std::make_shared<Recorder>(lines);
    for (const auto& [name, isRaw, receiver] : receivers(lines, recorder)) {
      for (const bool toInput : {true, false}) {
        SCOPED_TRACE(api.description() + ", " + name + (toInput ? ", input" : ", connection"));
        manager->addInput({.name = "in", .tag = "in", .receiver = receiver});
        manager->addInputConnection({.mode = MIDIInputConnectionMode::outputs({uniqueID(77)}),
                                     .tag = "connection",
                                     .receiver = receiver});
        for (const auto& row : table) {
          send(row, toInput);
          settle();
          Lines expected = isRaw ? (row.*column).raw : (row.*column).events;
          for (auto& line : expected) {
            line += toInput ? " timeStamp:5" : " timeStamp:5 source:\"keyboard\"";
          }
          EXPECT_EQ(std::exchange(lines, {}), expected) << row.description;
        }
        manager->removeAll();
      }
    }
  }
}

}  // namespace
}  // namespace midikit::io
