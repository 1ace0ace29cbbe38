#pragma once

#include <memory>

#include "foundation/run/Clock.hpp"
#include "foundation/run/Latch.hpp"
#include "foundation/run/OutsideWork.hpp"
#include "foundation/run/Queue.hpp"

namespace karvex::foundation {

/// The threads and the clock that a program runs on. SystemRuntime is the machine's own; VirtualRuntime is
/// the deterministic one of tests and of the rig's fast mode. The thread that makes a Runtime is its main
/// thread.
class Runtime {
 public:
  virtual ~Runtime() = default;

  virtual Clock& clock() = 0;

  /// One job at a time, on the main thread, while that is inside runMain().
  virtual Queue& mainQueue() = 0;

  /// Jobs run beside each other on threads of the runtime's own and may block.
  virtual Queue& globalQueue() = 0;

  /// Where threads of others report what they do for this program.
  virtual OutsideWork& outsideWork() = 0;

  /// A closed latch. Threads of this program wait for each other at such latches alone: on virtual time, who
  /// waits in any other way would keep the others from running. The runtime must outlive it.
  virtual std::shared_ptr<Latch> makeLatch() = 0;

  /// Runs the main queue's jobs on the calling thread, which must be the main thread, until stopMain().
  virtual void runMain() = 0;

  /// Makes runMain() return behind the jobs that the main queue holds already. Any thread.
  virtual void stopMain() = 0;

  /// Waits for the global jobs that have started, and drops the others, now and later. A job that waits for
  /// its turn on a SerialQueue gets it when those before it have ended or been dropped. The owner of what
  /// such jobs work on calls this on the main thread, after runMain(), before any of that goes. The
  /// destructor does the same.
  virtual void finish() = 0;
};

}  // namespace karvex::foundation
