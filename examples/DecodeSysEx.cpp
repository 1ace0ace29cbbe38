// Prints the system exclusive messages of a dump, one a line. Whatever is between them is skipped.
//
// Run: decode_sysex [FILE]   (standard input without FILE)

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <span>
#include <string>
#include <vector>

#include "MIDIKitCore/SysExParser.hpp"
#include "MIDIKitCore/sysex/SysExManufacturerTable.hpp"
#include "MIDIKitInternals/RadixText.hpp"
#include "examples/Bytes.hpp"

namespace {

using namespace midikit::core;
using midikit::internals::hexText;

std::string dataText(const SysExData& data) {
  return std::to_string(data.size()) + " bytes: " + hexText(data, {.width = 2});
}

std::string textOf(const MIDIEvent& event) {
  return event.visit(
      [](const MIDIEvent::SysEx7& message) {
        const auto name = manufacturerName(message.manufacturer).value_or("unknown");
        return message.manufacturer.description() + " (" + std::string(name) + "), " + dataText(message.data);
      },
      [](const MIDIEvent::UniversalSysEx7& message) {
        return std::string(description(message.universalType)) + ", device " +
               message.deviceID.description() + ", " + hexText(message.subID1.value(), {.width = 2}) + " " +
               hexText(message.subID2.value(), {.width = 2}) + ", " + dataText(message.data);
      },
      [](const auto& other) { return MIDIEvent(other).debugDescription(); });
}

constexpr std::uint8_t firstRealTimeStatus = 0xF8;

void printMessages(std::span<const std::uint8_t> dump) {
  const auto start = [&dump](auto from) { return std::find(from, dump.end(), 0xF0); };
  for (auto at = start(dump.begin()); at != dump.end();) {
    // To 0xF7, which belongs to the message, or to another status byte, which doesn't. Real-time messages
    // may stand in the middle.
    auto end = std::find_if(at + 1, dump.end(),
                            [](auto byte) { return byte >= 0x80 && byte < firstRealTimeStatus; });
    if (end != dump.end() && *end == 0xF7) {
      ++end;
    }
    std::vector<std::uint8_t> message;
    std::remove_copy_if(at, end, std::back_inserter(message),
                        [](auto byte) { return byte >= firstRealTimeStatus; });
    const auto event = parseSysEx7(message);
    std::cout << at - dump.begin() << ": " << (event ? textOf(*event) : description(event.error())) << '\n';
    at = start(end);
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::ifstream file;
  if (argc > 1) {
    file.open(argv[1], std::ios::binary);
    if (!file) {
      std::cerr << "decode_sysex: can't open " << argv[1] << '\n';
      return 1;
    }
  }
  printMessages(midikit::examples::readBytes(argc > 1 ? file : std::cin));
}
