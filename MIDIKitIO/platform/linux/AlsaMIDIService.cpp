#include "MIDIKitIO/platform/linux/AlsaMIDIService.hpp"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"
#include "MIDIKitIO/platform/engine/BlockGate.hpp"
#include "MIDIKitIO/platform/engine/MIDIDriver.hpp"
#include "MIDIKitIO/platform/engine/MIDIServiceEngine.hpp"
#include "MIDIKitIO/platform/linux/EquipmentModel.hpp"
#include "MIDIKitIO/platform/linux/EventCoder.hpp"
#include "MIDIKitIO/platform/linux/Outlet.hpp"
#include "MIDIKitIO/platform/linux/Sequencer.hpp"
#include "MIDIKitIO/platform/linux/SysfsCards.hpp"
#include "MIDIKitIO/platform/linux/ThruConnectionFile.hpp"
#include "foundation/Log.hpp"
#include "foundation/ReadReadiness.hpp"
#include "foundation/SerialQueue.hpp"
#include "foundation/Timer.hpp"

namespace midikit::io {

namespace {

using namespace std::chrono_literals;
using alsa::Outlet;
using alsa::PortAddress;
using alsa::Sequencer;
using engine::MIDIObjectKind;
using engine::SetupEditor;

/// The generation of the interface that is offered. The sequencer itself speaks MIDI 1.0; event lists of
/// either protocol are converted.
constexpr PlatformVersion offeredVersion{.major = 13, .minor = 0};

/// From the first news of a change until it is looked at: what comes together is told together.
constexpr auto settlingTime = 20ms;
/// So many events are taken before others get their turn on the queue.
constexpr std::size_t eventsAtOnce = 512;
/// What came from one port is handed on at the latest when there is so much of it, in bytes.
constexpr std::size_t mostAtOnce = 65536;
constexpr std::int32_t slowestSysEx = 100;

/// Tells the streams of other programs apart where a reference would tell a sender. References of objects
/// stay far below.
MIDIObjectRef streamOf(PortAddress from) {
  return 0xA0000000U | static_cast<MIDIObjectRef>(from.client) << 8U | static_cast<MIDIObjectRef>(from.port);
}

MIDIPacketList packetAt(std::uint64_t time, const std::vector<std::uint8_t>& bytes) {
  MIDIPacketList list(MIDIPacketList::headerSize + MIDIPacketList::packetHeaderSize + bytes.size());
  static_cast<void>(list.add(time, bytes));  // There is room.
  return list;
}

std::shared_ptr<engine::ThruConnectionStore> usualStore() {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing changes the environment.
  const auto file = alsa::thruConnectionFile(std::getenv("XDG_STATE_HOME"), std::getenv("HOME"));
  return file ? alsa::openThruConnectionStore(*file) : std::make_shared<engine::ThruConnectionStore>();
}

/// The kernel's sequencer for a service: equipment and other programs. Whatever comes from the sequencer is
/// worked up on one serial queue, what goes out on one for each destination.
class AlsaMIDIDriver final : public engine::MIDIDriver {
 public:
  using Ref = MIDIObjectRef;

  /// The runtime must outlive the driver.
  explicit AlsaMIDIDriver(karvex::foundation::Runtime& runtime);

  void attach(engine::MIDIDriverHost& host) override;
  void detach() override;
  void clientAdded(const std::string& name) override;
  void ownEndpointAdded(Ref endpoint, MIDIObjectKind kind) override;
  void ownEndpointRemoved(Ref endpoint) override;
  void ownEndpointChanged(Ref endpoint, std::string_view key) override;
  void wantedSourcesChanged() override;

 private:
  /// Bytes that came from one port to another of this program, not yet handed on.
  struct Incoming {
    PortAddress from;
    int to = -1;
    std::vector<std::uint8_t> bytes;
  };

  karvex::foundation::ReadOutcome takeEvents();
  void takeEvent(const snd_seq_event_t* event, Incoming& incoming);
  void handOn(Incoming& incoming);
  void lookSoon();
  void look();
  void followRoutes();

  /// This program's port for one of its own endpoints.
  std::optional<int> ownPortOf(Ref endpoint) const;
  engine::MIDIRouting::Receiver makeReceiver(Ref destination);
  void sendOut(Outlet& outlet, Ref destination, const MIDIPacketList& list);
  void emit(Outlet& outlet, Ref source, const MIDIPacketList& list);
  std::int64_t sysExSpeedOf(Ref endpoint) const;

  karvex::foundation::Runtime& runtime_;
  engine::MIDIDriverHost* host_ = nullptr;  ///< set by attach()
  std::unique_ptr<Sequencer> sequencer_;    ///< null where there is none
  std::atomic<bool> isClosing_ = false;
  std::atomic<bool> isNamed_ = false;
  karvex::foundation::SerialQueue queue_;
  std::shared_ptr<engine::BlockGate> gate_;  ///< around what runs on the queue; jobs hold on to it
  alsa::EventDecoder decoder_;               ///< used on the queue alone
  karvex::foundation::Timer timer_;          ///< the same
  bool isLookDue_ = false;                   ///< the same
  bool isLossTold_ = false;                  ///< the same
  std::mutex routesMutex_;                   ///< one change of what is listened to at a time
  mutable std::mutex mutex_;                 ///< of all below; no operation of the engine is called under it
  alsa::EquipmentModel model_;
  std::set<int> drivers_;  ///< the clients that are the kernel's
  std::map<Ref, int> ownPorts_;
  std::map<int, Ref> ownEndpoints_;
  std::optional<karvex::foundation::ReadReadiness> watch_;
};

AlsaMIDIDriver::AlsaMIDIDriver(karvex::foundation::Runtime& runtime)
    : runtime_(runtime),
      queue_(runtime.globalQueue(), "MIDI sequencer"),
      gate_(std::make_shared<engine::BlockGate>(runtime)),
      model_([this](Ref destination) { return makeReceiver(destination); }) {}

void AlsaMIDIDriver::attach(engine::MIDIDriverHost& host) {
  host_ = &host;
  std::string reason;
  sequencer_ = Sequencer::open(reason);
  if (sequencer_ == nullptr) {
    karvex::foundation::log::debug("No MIDI equipment: " + reason);
    return;
  }
  look();
  watch_.emplace(sequencer_->descriptor(), queue_, [this, gate = gate_] {
    auto outcome = karvex::foundation::ReadOutcome::gone;
    gate->pass([&] { outcome = takeEvents(); });
    return outcome;
  });
  watch_->resume();
}

void AlsaMIDIDriver::detach() {
  isClosing_ = true;
  watch_.reset();
  gate_->close();
}

void AlsaMIDIDriver::clientAdded(const std::string& name) {
  if (sequencer_ != nullptr && !isNamed_.exchange(true)) {
    sequencer_->setName(alsa::readableText(name));
  }
}

void AlsaMIDIDriver::ownEndpointChanged(Ref endpoint, std::string_view key) {
  const auto port = key == kMIDIPropertyName ? ownPortOf(endpoint) : std::nullopt;
  const auto name = port ? host_->text(endpoint, kMIDIPropertyName) : std::nullopt;
  if (name) {
    sequencer_->renamePort(*port, alsa::readableText(*name));
  }
}

karvex::foundation::ReadOutcome AlsaMIDIDriver::takeEvents() {
  using karvex::foundation::ReadOutcome;
  Incoming incoming;
  std::size_t count = 0;
  const bool isThere = sequencer_->input(eventsAtOnce, [&](const snd_seq_event_t* event) {
    ++count;
    takeEvent(event, incoming);
  });
  handOn(incoming);
  if (!isThere) {
    return ReadOutcome::gone;
  }
  return count > 0 ? ReadOutcome::data : ReadOutcome::nothing;
}

void AlsaMIDIDriver::takeEvent(const snd_seq_event_t* event, Incoming& incoming) {
  if (event == nullptr) {
    if (!std::exchange(isLossTold_, true)) {
      karvex::foundation::log::debug("MIDI input came too fast, and some is lost. This is told once.");
    }
    lookSoon();
    return;
  }
  const PortAddress from{event->source.client, event->source.port};
  if (from.client == SND_SEQ_CLIENT_SYSTEM) {
    if (event->data.addr.client != sequencer_->client()) {
      lookSoon();
    }
    return;
  }
  if (from != incoming.from || event->dest.port != incoming.to || incoming.bytes.size() >= mostAtOnce) {
    handOn(incoming);
    incoming.from = from;
    incoming.to = event->dest.port;
  }
  decoder_.decode(*event, incoming.bytes);
}

void AlsaMIDIDriver::handOn(Incoming& incoming) {
  if (incoming.bytes.empty()) {
    return;
  }
  const bool isForListener = incoming.to == sequencer_->ear().port;
  Ref endpoint = 0;
  {
    const std::lock_guard lock(mutex_);
    if (isForListener) {
      endpoint = model_.sourceAt(incoming.from);
    } else if (const auto own = ownEndpoints_.find(incoming.to); own != ownEndpoints_.end()) {
      endpoint = own->second;
    }
  }
  const auto list = packetAt(host_->machAbsoluteTime(), incoming.bytes);
  if (isForListener) {
    host_->sendFromEquipment(endpoint, list);
  } else {
    host_->sendFromOutside(endpoint, streamOf(incoming.from), list);
  }
  incoming.bytes.clear();
}

/// On the queue. The first news sets the time, so that a stream of them can't put the look off for ever.
void AlsaMIDIDriver::lookSoon() {
  if (std::exchange(isLookDue_, true)) {
    return;
  }
  timer_ = karvex::foundation::Timer::oneShot(runtime_.clock(), queue_, settlingTime, [this, gate = gate_] {
    gate->pass([this] {
      isLookDue_ = false;
      look();
    });
  });
}

/// On the queue, or in the constructor.
void AlsaMIDIDriver::look() {
  auto clients = sequencer_->clients();
  std::map<int, alsa::CardFacts> cards;
  std::set<int> drivers;
  for (const auto& client : clients) {
    if (client.card && !cards.contains(*client.card)) {
      cards.emplace(*client.card, alsa::readCard(alsa::soundClass, *client.card));
    }
    if (client.isKernel) {
      drivers.insert(client.number);
    }
  }
  const auto equipment = alsa::equipmentOf(std::move(clients), cards, sequencer_->client());
  host_->edit([&](SetupEditor& editor) {
    const std::lock_guard lock(mutex_);
    drivers_ = std::move(drivers);
    model_.update(equipment, editor);
  });
  wantedSourcesChanged();
}

/// What is listened to becomes what somebody wants to hear. The kernel tells what the former is: it forgets
/// what is listened to when a port goes.
void AlsaMIDIDriver::wantedSourcesChanged() {
  if (sequencer_ != nullptr) {
    followRoutes();
  }
}

void AlsaMIDIDriver::followRoutes() {
  const std::lock_guard turn(routesMutex_);
  std::set<PortAddress> wanted;
  const auto refs = host_->wantedSources();
  {
    const std::lock_guard lock(mutex_);
    for (const Ref source : refs) {
      if (const auto address = model_.addressOf(source)) {
        wanted.insert(*address);
      }
    }
  }
  const auto present = sequencer_->heard();
  for (const auto address : wanted) {
    if (!present.contains(address)) {
      sequencer_->listen(address);
    }
  }
  for (const auto address : present) {
    if (!wanted.contains(address)) {
      sequencer_->stopListening(address);
    }
  }
}

void AlsaMIDIDriver::ownEndpointAdded(Ref endpoint, MIDIObjectKind kind) {
  if (sequencer_ == nullptr) {
    return;
  }
  const auto name = host_->text(endpoint, kMIDIPropertyName);
  const bool isSource = kind == MIDIObjectKind::source;
  const auto port =
      sequencer_->addPort(alsa::readableText(name.value_or(std::string())),
                          isSource ? Sequencer::Direction::source : Sequencer::Direction::destination);
  if (!port) {
    karvex::foundation::log::debug(
        "Other programs don't see the MIDI endpoint: the sequencer has no port left.");
    return;
  }
  {
    const std::lock_guard lock(mutex_);
    ownPorts_.emplace(endpoint, *port);
    ownEndpoints_.emplace(*port, endpoint);
  }
  if (isSource) {
    auto outlet = std::make_shared<Outlet>(alsa::OutletContext{runtime_, *sequencer_, isClosing_});
    auto& queue = outlet->queue();
    host_->listenAsEquipment(
        endpoint, queue,
        [this, endpoint, outlet = std::move(outlet)](const MIDIPacketList& list, ConnectionToken /*token*/) {
          emit(*outlet, endpoint, list);
        });
  }
}

void AlsaMIDIDriver::ownEndpointRemoved(Ref endpoint) {
  std::optional<int> port;
  {
    const std::lock_guard lock(mutex_);
    if (const auto node = ownPorts_.extract(endpoint); !node.empty()) {
      port = node.mapped();
      ownEndpoints_.erase(*port);
    }
  }
  if (port) {
    sequencer_->removePort(*port);
  }
}

std::optional<int> AlsaMIDIDriver::ownPortOf(Ref endpoint) const {
  const std::lock_guard lock(mutex_);
  const auto found = ownPorts_.find(endpoint);
  return found != ownPorts_.end() ? std::optional(found->second) : std::nullopt;
}

engine::MIDIRouting::Receiver AlsaMIDIDriver::makeReceiver(Ref destination) {
  auto outlet = std::make_shared<Outlet>(alsa::OutletContext{runtime_, *sequencer_, isClosing_});
  auto& queue = outlet->queue();
  MIDIReadBlock block = [this, destination, outlet = std::move(outlet)](const MIDIPacketList& list,
                                                                        ConnectionToken /*token*/) {
    sendOut(*outlet, destination, list);
  };
  return std::make_shared<engine::ListReceiver>(runtime_, queue, std::move(block));
}

void AlsaMIDIDriver::sendOut(Outlet& outlet, Ref destination, const MIDIPacketList& list) {
  std::optional<PortAddress> address;
  bool isDriver = false;
  {
    const std::lock_guard lock(mutex_);
    address = model_.addressOf(destination);
    isDriver = address && drivers_.contains(address->client);
  }
  if (address) {
    outlet.send(list, {*address, isDriver ? std::optional(sysExSpeedOf(destination)) : std::nullopt},
                std::nullopt);
  }
}

/// To each listener by itself: one that has no room must not make the others hear a thing twice.
void AlsaMIDIDriver::emit(Outlet& outlet, Ref source, const MIDIPacketList& list) {
  const auto port = ownPortOf(source);
  if (!port) {
    return;
  }
  for (const auto listener : sequencer_->listeners(*port)) {
    bool isDriver = false;
    {
      const std::lock_guard lock(mutex_);
      isDriver = drivers_.contains(listener.client);
    }
    outlet.send(list, {listener, isDriver ? std::optional(sysExSpeedOf(source)) : std::nullopt}, port);
  }
}

/// The standard's rate where none is set.
std::int64_t AlsaMIDIDriver::sysExSpeedOf(Ref endpoint) const {
  return std::max(host_->number(endpoint, kMIDIPropertyMaxSysExSpeed).value_or(3125), slowestSysEx);
}

}  // namespace

std::shared_ptr<MIDIService> makeAlsaMIDIService(karvex::foundation::Runtime& runtime) {
  return std::make_shared<engine::MIDIServiceEngine>(runtime, offeredVersion, usualStore(),
                                                     std::make_shared<AlsaMIDIDriver>(runtime));
}

}  // namespace midikit::io
