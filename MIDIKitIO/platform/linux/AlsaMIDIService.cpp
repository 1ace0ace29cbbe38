#include "MIDIKitIO/platform/linux/AlsaMIDIService.hpp"

#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

#include "MIDIKitIO/platform/engine/MIDIServiceEngine.hpp"
#include "MIDIKitIO/platform/linux/AlsaMIDIDriver.hpp"
#include "MIDIKitIO/platform/linux/ThruConnectionFile.hpp"
#include "MIDIKitIO/platform/linux/ThruConnectionFollower.hpp"

namespace midikit::io {

namespace {

/// The generation of the interface that is offered. The sequencer itself speaks MIDI 1.0; event lists of
/// either protocol are converted.
constexpr PlatformVersion offeredVersion{.major = 13, .minor = 0};

/// The service with what keeps it in step with other programs, which goes first.
struct Whole {
  Whole(karvex::foundation::Runtime& runtime, const std::shared_ptr<engine::ThruConnectionStore>& store)
      : service(runtime, offeredVersion, store, std::make_shared<alsa::AlsaMIDIDriver>(runtime)) {}

  engine::MIDIServiceEngine service;
  std::optional<alsa::ThruConnectionFollower> follower;
};

}  // namespace

std::shared_ptr<MIDIService> makeAlsaMIDIService(karvex::foundation::Runtime& runtime) {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing changes the environment.
  const auto file = alsa::thruConnectionFile(std::getenv("XDG_STATE_HOME"), std::getenv("HOME"));
  const auto store =
      file ? alsa::openThruConnectionStore(*file) : std::make_shared<engine::ThruConnectionStore>();
  store->setForwarding(!file);  // With a file, that is for the follower to find out.
  auto whole = std::make_shared<Whole>(runtime, store);
  if (file) {
    whole->follower.emplace(runtime, store, *file);
  }
  auto& service = whole->service;
  return {std::move(whole), &service};
}

}  // namespace midikit::io
