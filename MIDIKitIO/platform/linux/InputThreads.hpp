#pragma once

#include <array>
#include <functional>
#include <memory>
#include <thread>

#include "MIDIKitIO/platform/engine/ListReceiver.hpp"

namespace midikit::io::alsa {

/// Two threads that read from a descriptor. The one that has read also calls the readers of what came, and
/// does what these post to idle queues, so that no change of threads delays it. If that takes its time, the
/// other one goes on reading, and leaves all that to the queues. When nothing comes, both sleep.
class InputThreads {
 public:
  /// What came of one look at the descriptor.
  struct Intake {
    bool hasAny = false;
    bool hasGone = false;  ///< nothing will ever come: there is no further look
    engine::Handovers handovers;
  };
  /// Takes what the descriptor has, without waiting. One call at a time.
  using Read = std::function<Intake()>;

  /// The descriptor must not block, and must outlive the object. Throws std::system_error if the system has
  /// no more descriptors or threads.
  InputThreads(int descriptor, Read read);

  /// When this returns, no thread reads or makes handovers any more, unless the calling thread is inside of
  /// one.
  ~InputThreads();
  InputThreads(const InputThreads&) = delete;
  InputThreads& operator=(const InputThreads&) = delete;

 private:
  struct State;
  std::shared_ptr<State> state_;
  std::array<std::thread, 2> threads_;
};

}  // namespace midikit::io::alsa
