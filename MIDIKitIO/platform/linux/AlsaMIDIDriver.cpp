#include "MIDIKitIO/platform/linux/AlsaMIDIDriver.hpp"

#include <utility>

#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"
#include "foundation/Log.hpp"

namespace midikit::io::alsa {

namespace {

using Reason = Sequencer::Unavailable::Reason;

constexpr const char* devices = "/dev";
constexpr const char* soundDevices = "/dev/snd";

const char* remedyFor(Reason reason) {
  switch (reason) {
    case Reason::absent:
      return "It is taken up when the kernel has one.";
    case Reason::forbidden:
      return "It is taken up when this user may use it.";
    case Reason::exhausted:
      return "It is tried again when something changes in /dev/snd.";
  }
  return "";
}

}  // namespace

AlsaMIDIDriver::AlsaMIDIDriver(karvex::foundation::Runtime& runtime)
    : runtime_(runtime),
      queue_(runtime.globalQueue(), "MIDI devices"),
      gate_(std::make_shared<engine::BlockGate>(runtime)) {}

void AlsaMIDIDriver::attach(engine::MIDIDriverHost& host) {
  host_ = &host;
  takeUp();
  if (session() == nullptr) {
    waitForSequencer();
  }
}

void AlsaMIDIDriver::detach() {
  watch_.reset();
  gate_->close();
  if (const auto open = session()) {
    open->close();
  }
}

/// The watch stands before the next look, so nothing that appears between the two is missed.
void AlsaMIDIDriver::waitForSequencer() {
  watch_.emplace(queue_, [this, gate = gate_] {
    gate->pass([this] {
      if (session() == nullptr) {
        watch_->add(soundDevices, FileWatch::contents | FileWatch::attributes);
        takeUp();
      }
    });
  });
  watch_->add(devices, FileWatch::contents);
  watch_->add(soundDevices, FileWatch::contents | FileWatch::attributes);
  watch_->poke();
}

void AlsaMIDIDriver::takeUp() {
  std::optional<Sequencer::Unavailable> why;
  auto sequencer = Sequencer::open(why);
  if (sequencer == nullptr) {
    sayWhy(*why);
    return;
  }
  const auto opened = std::make_shared<SequencerSession>(runtime_, *host_, std::move(sequencer));
  const std::lock_guard turn(turn_);
  {
    const std::lock_guard lock(mutex_);
    session_ = opened;
  }
  opened->start();
  if (clientName_) {
    opened->setName(*clientName_);
  }
  for (const auto& [endpoint, kind] : ownEndpoints_) {
    opened->addEndpoint(endpoint, kind);
  }
  opened->followRoutes();
}

void AlsaMIDIDriver::sayWhy(const Sequencer::Unavailable& why) {
  if (std::exchange(told_, why.reason) != why.reason) {
    karvex::foundation::log::debug("No MIDI equipment: " + why.text + ". " + remedyFor(why.reason));
  }
}

std::shared_ptr<SequencerSession> AlsaMIDIDriver::session() const {
  const std::lock_guard lock(mutex_);
  return session_;
}

void AlsaMIDIDriver::clientAdded(const std::string& name) {
  const std::lock_guard turn(turn_);
  if (clientName_) {
    return;
  }
  clientName_ = name;
  if (const auto open = session()) {
    open->setName(name);
  }
}

void AlsaMIDIDriver::ownEndpointAdded(Ref endpoint, engine::MIDIObjectKind kind) {
  const std::lock_guard turn(turn_);
  ownEndpoints_.emplace(endpoint, kind);
  if (const auto open = session()) {
    open->addEndpoint(endpoint, kind);
  }
}

void AlsaMIDIDriver::ownEndpointRemoved(Ref endpoint) {
  const std::lock_guard turn(turn_);
  ownEndpoints_.erase(endpoint);
  if (const auto open = session()) {
    open->removeEndpoint(endpoint);
  }
}

void AlsaMIDIDriver::ownEndpointChanged(Ref endpoint, std::string_view key) {
  if (key != kMIDIPropertyName && key != kMIDIPropertyPrivate) {
    return;
  }
  const std::lock_guard turn(turn_);
  const auto found = ownEndpoints_.find(endpoint);
  if (const auto open = session(); open != nullptr && found != ownEndpoints_.end()) {
    open->refreshEndpoint(endpoint, found->second);
  }
}

void AlsaMIDIDriver::wantedSourcesChanged() {
  if (const auto open = session()) {
    open->followRoutes();
  }
}

bool AlsaMIDIDriver::connectsByItself(Ref source, Ref destination) const {
  const auto open = session();
  return open == nullptr || open->connectsByItself(source, destination);
}

}  // namespace midikit::io::alsa
