#pragma once

#include <cstdint>
#include <map>
#include <span>

#include "MIDIKitCore/detail/SysExBuffer.hpp"
#include "MIDIKitCore/numbers/UInt.hpp"
#include "MIDIKitIO/platform/MIDIPacketList.hpp"
#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "MIDIKitIO/platform/engine/ByteSplitter.hpp"
#include "MIDIKitIO/platform/engine/MIDIList.hpp"
#include "MIDIKitIO/platform/engine/ProtocolTranslation.hpp"

namespace midikit::io::engine {

/// Brings the lists of one stream into the form that a reader wants. A list that has the wanted form already
/// stays as it is, whatever is in it. Byte readers always get system exclusive messages whole, in a packet of
/// their own, with the time stamp of their end; so do word readers from bytes. Not locked.
///
/// Each result is the list itself or `room`, which is an empty list that grows; a short message takes no
/// memory of its own there.
class ListConverter {
 public:
  /// In bytes. Longer system exclusive messages are dropped, so that one without an end can't fill the
  /// memory.
  static constexpr std::size_t longestSysEx = ByteSplitter::longestSysEx;

  const MIDIEventList& toWords(MIDIListView list, MIDIProtocolID protocol, MIDIEventList& room);
  const MIDIPacketList& toBytes(MIDIListView list, MIDIPacketList& room);

  /// Nothing is kept for the next list.
  bool isIdle() const { return splitter_.isIdle() && sysEx7_.empty(); }

 private:
  void appendBytes(MIDIPacketList& list, std::uint64_t timeStamp, std::span<const std::uint32_t> words);
  void appendSysEx7(MIDIPacketList& list, std::uint64_t timeStamp, std::span<const std::uint32_t> words);

  ByteSplitter splitter_;
  ProtocolTranslator translator_;
  /// By group, what there is of system exclusive messages that come in words; none for a group without.
  std::map<core::UInt4, core::SysExBuffer> sysEx7_;
};

}  // namespace midikit::io::engine
