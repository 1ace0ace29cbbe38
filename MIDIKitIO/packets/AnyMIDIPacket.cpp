#include "MIDIKitIO/packets/AnyMIDIPacket.hpp"

#include <array>
#include <cstddef>

#include "MIDIKitCore/wire/UMPPacket.hpp"
#include "MIDIKitCore/wire/UMPWords.hpp"

namespace midikit::io {
namespace {

MIDIPacketBytes bytesOf(std::span<const std::uint32_t> words) {
  constexpr std::size_t most = core::UMPPacket::maximumWords;
  if (words.size() > most) {
    return MIDIPacketBytes(core::umpBytes(words));
  }
  std::array<std::uint8_t, most * sizeof(std::uint32_t)> bytes{};
  return MIDIPacketBytes(core::writeUMPBytes(words, bytes));
}

}  // namespace

UniversalMIDIPacketData::UniversalMIDIPacketData(std::span<const std::uint32_t> words,
                                                 std::uint64_t itsTimeStamp, MIDIPacketSource itsSource)
    : bytes(bytesOf(words)), timeStamp(itsTimeStamp), source(std::move(itsSource)) {}

}  // namespace midikit::io
