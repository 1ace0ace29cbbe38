#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "foundation/run/Latch.hpp"
#include "foundation/run/Runtime.hpp"

namespace midikit::io::engine {

/// Lets the calls of one client's block through until it is closed, and makes sure that none is under way
/// after that. All operations may be called on any thread; the calls themselves come one at a time.
class BlockGate {
 public:
  /// The runtime must outlive the use of the gate.
  explicit BlockGate(karvex::foundation::Runtime& runtime) : runtime_(runtime) {}

  /// Makes the call, on this thread, unless the gate is closed.
  template <typename Call>
  void pass(const Call& call) {
    if (enter()) {
      call();
      leave();
    }
  }

  /// No call begins any more, and when this returns none is under way, unless this thread is inside one.
  void close();

 private:
  bool enter();
  void leave();

  karvex::foundation::Runtime& runtime_;
  std::atomic<bool> isClosed_ = false;
  std::atomic<std::thread::id> occupant_{};  ///< the thread inside a call
  std::mutex mutex_;
  std::vector<std::shared_ptr<karvex::foundation::Latch>>
      awaited_;  ///< of those who wait for the end of the call
};

}  // namespace midikit::io::engine
