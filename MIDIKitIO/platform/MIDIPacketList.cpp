#include "MIDIKitIO/platform/MIDIPacketList.hpp"

namespace midikit::io {

bool MIDIPacketList::add(std::uint64_t timeStamp, std::span<const std::uint8_t> bytes) {
  if (used_ + packetHeaderSize > size_ || bytes.size() > size_ - used_ - packetHeaderSize) {
    return false;
  }
  packets_.push_back({timeStamp, bytes_.size(), bytes.size()});
  bytes_.append(bytes.data(), bytes.size());
  used_ += packetHeaderSize + bytes.size();
  return true;
}

}  // namespace midikit::io
