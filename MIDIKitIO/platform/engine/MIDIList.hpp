#pragma once

#include <memory>
#include <utility>
#include <variant>

#include "MIDIKitIO/platform/MIDIPacketList.hpp"
#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "foundation/run/BlockStore.hpp"

namespace midikit::io::engine {

/// A list of either generation on its way. Never changed, so all who get it can share it.
using MIDIList = std::variant<MIDIPacketList, MIDIEventList>;
using SharedMIDIList = std::shared_ptr<const MIDIList>;
/// A list of either generation during a call, which doesn't copy it. Never null.
using MIDIListView = std::variant<const MIDIPacketList*, const MIDIEventList*>;

inline MIDIListView viewOf(const MIDIList& list) {
  return std::visit([](const auto& one) { return MIDIListView(&one); }, list);
}

/// Makes lists shareable in memory that it keeps, so that a list with one short packet is not allocated for.
/// All operations may be called on any thread.
class MIDIListMemory {
 public:
  SharedMIDIList share(MIDIList list) const {
    return std::allocate_shared<const MIDIList>(allocator_, std::move(list));
  }

 private:
  /// A list with what sharing adds to it, and as many of them as wait when a few destinations are busy.
  karvex::foundation::BlockAllocator<MIDIList> allocator_{
      std::make_shared<karvex::foundation::BlockStore>(sizeof(MIDIList) + 64, 256)};
};

}  // namespace midikit::io::engine
