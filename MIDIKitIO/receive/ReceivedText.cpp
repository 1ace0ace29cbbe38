#include "MIDIKitIO/receive/ReceivedText.hpp"

#include <string_view>

#include "MIDIKitInternals/RadixText.hpp"
#include "MIDIKitInternals/Text.hpp"

namespace midikit::io {
namespace {

std::string originText(std::uint64_t timeStamp, const MIDIPacketSource& source) {
  return " timeStamp:" + std::to_string(timeStamp) +
         (source ? " source:" + internals::quoted(source->displayName) : std::string());
}

}  // namespace

std::string textOf(std::span<const core::MIDIEvent> events, std::uint64_t timeStamp,
                   const MIDIPacketSource& source) {
  std::string text;
  std::string_view between;
  for (const auto& event : events) {
    text.append(between).append(event.debugDescription());
    between = ", ";
  }
  return text + originText(timeStamp, source);
}

std::string textOf(const AnyMIDIPacket& packet) {
  return internals::hexText(packet.bytes(), {.width = 2}) + originText(packet.timeStamp(), packet.source());
}

}  // namespace midikit::io
