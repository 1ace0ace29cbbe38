#include "MIDIKitCore/SysExBytes.hpp"

#include <algorithm>

namespace midikit::core {
namespace {

template <typename Event>
void append(const Event& event, SysExFraming framing, std::vector<std::uint8_t>& into) {
  const SysExHeader header(event);
  into.reserve(into.size() + header.size() + event.data.size() + 2);
  if (framing.leading) {
    into.push_back(0xF0);
  }
  into.insert(into.end(), header.begin(), header.end());
  into.insert(into.end(), event.data.begin(), event.data.end());
  if (framing.trailing) {
    into.push_back(0xF7);
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
