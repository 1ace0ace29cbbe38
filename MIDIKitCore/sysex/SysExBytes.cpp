#include "MIDIKitCore/sysex/SysExBytes.hpp"

#include <algorithm>
#include <cstddef>

#include "MIDIKitCore/wire/MIDI1Status.hpp"

namespace midikit::core {
namespace {

template <typename Event>
void append(const Event& event, SysExFraming framing, std::vector<std::uint8_t>& into) {
  const SysExHeader header(event);
  const std::size_t before = into.size();
  const std::size_t frame = std::size_t{framing.leading} + std::size_t{framing.trailing};
  // Not reserve(), which makes just as much room as it's asked for: a list of many messages would move each
  // time.
  into.resize(before + header.size() + event.data.size() + frame);
  std::uint8_t* at = into.data() + before;
  if (framing.leading) {
    *at++ = sysExStatus;
  }
  at = std::ranges::copy(header, at).out;
  at = std::ranges::copy(event.data, at).out;
  if (framing.trailing) {
    *at = sysExEndStatus;
  }
}

}  // namespace

SysExHeader::SysExHeader(const SysEx7& event) : size_(event.manufacturer.bytes7().size()) {
  std::ranges::copy(event.manufacturer.bytes7(), bytes_.begin());
}

SysExHeader::SysExHeader(const UniversalSysEx7& event)
    : bytes_{static_cast<std::uint8_t>(event.universalType), event.deviceID.value(), event.subID1.value(),
             event.subID2.value()},
      size_(4) {}

SysExHeader::SysExHeader(const SysEx8& event) : size_(2) {
  std::ranges::copy(event.manufacturer.bytes8(), bytes_.begin());
}

SysExHeader::SysExHeader(const UniversalSysEx8& event)
    : bytes_{0, static_cast<std::uint8_t>(event.universalType), event.deviceID.value(), event.subID1.value(),
             event.subID2.value()},
      size_(5) {}

void appendSysEx7Bytes(const SysEx7& event, SysExFraming framing, std::vector<std::uint8_t>& into) {
  append(event, framing, into);
}

void appendSysEx7Bytes(const UniversalSysEx7& event, SysExFraming framing, std::vector<std::uint8_t>& into) {
  append(event, framing, into);
}

std::vector<std::uint8_t> sysEx7Bytes(const SysEx7& event, SysExFraming framing) {
  std::vector<std::uint8_t> bytes;
  append(event, framing, bytes);
  return bytes;
}

std::vector<std::uint8_t> sysEx7Bytes(const UniversalSysEx7& event, SysExFraming framing) {
  std::vector<std::uint8_t> bytes;
  append(event, framing, bytes);
  return bytes;
}

}  // namespace midikit::core
