#pragma once

#include <functional>
#include <memory>
#include <thread>

#include "foundation/run/Queue.hpp"

namespace karvex::foundation {

/// What came of a read, and with it when the next one is worth trying.
enum class ReadOutcome {
  data,     ///< something: again as soon as there is more
  nothing,  ///< nothing, although the descriptor is ready: again, but not at once
  gone,     ///< nothing, and there never will be: no further read
};

/// Calls a handler on a queue whenever a descriptor is readable or has been hung up, one call at a time, from
/// resume() until the object is destroyed or the handler finds that the source has gone. It leaves the
/// descriptor as it is, blocking or not; Asio would make it a non-blocking one, also for whoever reads from
/// it otherwise.
///
/// A descriptor that is hung up is readable for ever and gives nothing. It is looked at again only after
/// pauseAfterNothing, so that it doesn't keep a processor busy.
class ReadReadiness {
 public:
  using Handler = std::function<ReadOutcome()>;

  static constexpr std::chrono::milliseconds pauseAfterNothing{100};

  /// Has a thread of its own, which waits for resume(). The descriptor and the queue must outlive the object.
  /// Throws std::system_error if the system has no more descriptors or threads.
  ReadReadiness(int descriptor, Queue& queue, Handler handler);

  /// Nothing looks at the descriptor any more, and no call begins. One that has begun may still be running on
  /// the queue; whoever shares something with it keeps it out with a lock.
  ~ReadReadiness();
  ReadReadiness(const ReadReadiness&) = delete;
  ReadReadiness& operator=(const ReadReadiness&) = delete;

  /// Starts the calls. Harmless a second time. Any thread.
  void resume();

 private:
  struct State;
  std::shared_ptr<State> state_;
  std::thread watcher_;
};

}  // namespace karvex::foundation
