#include "MIDIKitIO/platform/linux/ThruConnectionFollower.hpp"

#include <chrono>
#include <system_error>
#include <utility>

namespace midikit::io::alsa {

namespace {

using namespace std::chrono_literals;
using karvex::foundation::Duration;

/// The kernel says that the lock's file was closed a moment before it takes the lock back. So it is asked
/// again after such a pause, and after twice as long, until the last.
constexpr Duration firstPause = 5ms;
constexpr Duration lastPause = 640ms;

/// A folder that isn't there couldn't be watched.
std::filesystem::path withFolder(std::filesystem::path file) {
  std::error_code ignored;
  std::filesystem::create_directories(file.parent_path(), ignored);
  return file;
}

}  // namespace

ThruConnectionFollower::ThruConnectionFollower(karvex::foundation::Runtime& runtime,
                                               std::shared_ptr<engine::ThruConnectionStore> store,
                                               const std::filesystem::path& file)
    : runtime_(runtime),
      store_(std::move(store)),
      forwarder_(withFolder(file).string() + ".forwarder", FileLock::Patience::asksOnce),
      queue_(runtime.globalQueue(), "MIDI thru connections"),
      gate_(std::make_shared<engine::BlockGate>(runtime)),
      watch_(queue_, [this, gate = gate_] { gate->pass([this] { lookAgain(); }); }) {
  store_->setForwarding(forwarder_.isHeld());
  watch_.add(file.parent_path(), FileWatch::contents | FileWatch::closed);
  watch_.poke();  // Whatever has changed before the watch stood.
}

ThruConnectionFollower::~ThruConnectionFollower() {
  gate_->close();
}

void ThruConnectionFollower::lookAgain() {
  store_->reload();
  if (!store_->isForwarding()) {
    tryToForward(firstPause);
  }
}

void ThruConnectionFollower::tryToForward(Duration pause) {
  if (forwarder_.isHeld()) {
    store_->setForwarding(true);
  } else if (pause <= lastPause) {
    timer_ = karvex::foundation::Timer::oneShot(runtime_.clock(), queue_, pause, [this, gate = gate_, pause] {
      gate->pass([this, pause] { tryToForward(2 * pause); });
    });
  }
}

}  // namespace midikit::io::alsa
