#pragma once

#include <memory>

#include "MIDIKitIO/receive/MIDIReceiver.hpp"
#include "MIDIKitIO/receive/MIDIReceiverProtocol.hpp"
#include "MIDIKitIO/receive/ReceiveContext.hpp"

namespace midikit::io {

/// Makes the handler of one port: it has the parsers that the receiver asks for, and keeps them until the
/// port lets go of it.
///
/// Thread-safe: yes.
/// Realtime-safe: no, it allocates.
std::shared_ptr<MIDIReceiverProtocol> makeReceiveHandler(const MIDIReceiver& receiver,
                                                         const ReceiveContext& context);

}  // namespace midikit::io
