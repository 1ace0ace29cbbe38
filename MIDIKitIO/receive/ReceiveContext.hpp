#pragma once

#include <memory>

#include "foundation/run/Clock.hpp"
#include "foundation/run/Queue.hpp"

namespace midikit::io {

/// Where handlers live: the queue that hands them packets, for events that come out later than their packet.
struct ReceiveContext {
  /// Must outlive the handlers.
  karvex::foundation::Clock& clock;
  /// The manager's eventQueue, which handlers don't keep alive. What comes out when it is gone is dropped.
  std::weak_ptr<karvex::foundation::Queue> eventQueue;
};

}  // namespace midikit::io
