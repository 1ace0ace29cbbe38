#pragma once

#include <filesystem>
#include <memory>

#include "MIDIKitIO/platform/engine/BlockGate.hpp"
#include "MIDIKitIO/platform/engine/ThruConnectionStore.hpp"
#include "MIDIKitIO/platform/linux/FileLock.hpp"
#include "MIDIKitIO/platform/linux/FileWatch.hpp"
#include "foundation/run/Runtime.hpp"
#include "foundation/run/SerialQueue.hpp"
#include "foundation/run/Timer.hpp"

namespace midikit::io::alsa {

/// Keeps a store in step with the other programs that use its file: it follows their changes, and sees to it
/// that one of them all forwards, the one that holds the file "NAME.forwarder" locked. When that one ends,
/// the next takes over.
class ThruConnectionFollower {
 public:
  /// The runtime must outlive the follower.
  ThruConnectionFollower(karvex::foundation::Runtime& runtime,
                         std::shared_ptr<engine::ThruConnectionStore> store,
                         const std::filesystem::path& file);
  ~ThruConnectionFollower();
  ThruConnectionFollower(const ThruConnectionFollower&) = delete;
  ThruConnectionFollower& operator=(const ThruConnectionFollower&) = delete;

 private:
  void lookAgain();
  void tryToForward(karvex::foundation::Duration pause);

  karvex::foundation::Runtime& runtime_;
  std::shared_ptr<engine::ThruConnectionStore> store_;
  FileLock forwarder_;
  karvex::foundation::SerialQueue queue_;
  std::shared_ptr<engine::BlockGate> gate_;
  karvex::foundation::Timer timer_;
  FileWatch watch_;
};

}  // namespace midikit::io::alsa
