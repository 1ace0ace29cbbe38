#include "MIDIKitIO/packets/AnyMIDIPacket.hpp"

#include <array>
#include <cstddef>

#include "MIDIKitCore/UMPPacket.hpp"
#include "MIDIKitCore/UMPWords.hpp"

namespace midikit::io {
namespace {

MIDIPacketBytes bytesOf(std::span<const std::uint32_t> words) {
  constexpr std::size_t most = core::UMPPacket::maximumWords;
  if (words.size() > most) {
    return MIDIPacketBytes(core::umpBytes(words));
  }
  std::array<std::uint8_t, most * sizeof(std::uint32_t)> bytes{};
  for (std::size_t word = 0; word < words.size(); ++word) {
    core::writeUMPBytes(words.subspan(word, 1), &bytes.at(word * sizeof(std::uint32_t)));
  }
  return MIDIPacketBytes(std::span(bytes).first(words.size() * sizeof(std::uint32_t)));
}

}  // namespace

UniversalMIDIPacketData::UniversalMIDIPacketData(std::span<const std::uint32_t> words,
                                                 std::uint64_t itsTimeStamp, MIDIPacketSource itsSource)
    : bytes(bytesOf(words)), timeStamp(itsTimeStamp), source(std::move(itsSource)) {}

}  // namespace midikit::io
