#include "MIDIKitIO/platform/MIDIPacketList.hpp"

namespace midikit::io {

MIDIPacketList::MIDIPacketList(std::size_t size) : size_(size) {}

bool MIDIPacketList::add(std::uint64_t timeStamp, std::span<const std::uint8_t> bytes) {
  if (used_ + packetHeaderSize > size_ || bytes.size() > size_ - used_ - packetHeaderSize) {
    return false;
  }
  packets_.push_back({timeStamp, bytes_.size(), bytes.size()});
  bytes_.append(bytes.data(), bytes.size());
  used_ += packetHeaderSize + bytes.size();
  return true;
}

MIDIPacketView MIDIPacketList::packet(std::size_t index) const {
  const Place& place = packets_.at(index);
  return {place.timeStamp, std::span(bytes_).subspan(place.offset, place.length)};
}

}  // namespace midikit::io
