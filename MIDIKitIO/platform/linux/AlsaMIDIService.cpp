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
#include "MIDIKitIO/platform/engine/MIDIServiceEngine.hpp"
#include "MIDIKitIO/platform/linux/Emitter.hpp"
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

/// The layer's service on the kernel's sequencer: equipment and other programs for the engine. Whatever comes
/// from the sequencer is worked up on one serial queue, what goes out on one for each destination.
class AlsaMIDIService final : public engine::MIDIServiceEngine {
 public:
  explicit AlsaMIDIService(karvex::foundation::Runtime& itsRuntime);
  ~AlsaMIDIService() override;

  OSStatus MIDIClientCreateWithBlock(const std::string& name, Ref& outClient, MIDINotifyBlock block) override;
  OSStatus MIDIObjectSetStringProperty(Ref object, std::string_view key, std::string_view value) override;

 private:
  /// Bytes that came from one port to another of this program, not yet handed on.
  struct Incoming {
    PortAddress from;
    int to = -1;
    std::vector<std::uint8_t> bytes;
  };

  void routesChanged() override;
  void ownEndpointAdded(Ref endpoint) override;
  void ownEndpointRemoved(Ref endpoint) override;

  karvex::foundation::ReadOutcome takeEvents();
  void takeEvent(const snd_seq_event_t* event, Incoming& incoming);
  void handOn(Incoming& incoming);
  void lookSoon();
  void look();
  void followRoutes();

  /// This program's port for one of its own endpoints.
  std::optional<int> ownPortOf(Ref endpoint) const;
  engine::MIDIRouting::Receiver makeReceiver(Ref destination);
  alsa::OutletContext outputs() const { return {runtime(), sequencer_, outputGate_}; }
  std::optional<PortAddress> placeOf(Ref destination) const;
  std::optional<std::int64_t> sysExRateOf(Ref endpoint, int client) const;

  std::shared_ptr<Sequencer> sequencer_;  ///< null where there is none
  std::shared_ptr<alsa::OutputGate> outputGate_ = std::make_shared<alsa::OutputGate>();
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

AlsaMIDIService::AlsaMIDIService(karvex::foundation::Runtime& itsRuntime)
    : MIDIServiceEngine(itsRuntime, offeredVersion, usualStore()),
      queue_(itsRuntime.globalQueue(), "MIDI sequencer"),
      gate_(std::make_shared<engine::BlockGate>(itsRuntime)),
      model_([this](Ref destination) { return makeReceiver(destination); }) {
  std::optional<Sequencer::Unavailable> why;
  sequencer_ = Sequencer::open(why);
  if (sequencer_ == nullptr) {
    karvex::foundation::log::debug("No MIDI equipment: " + why->text);
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

AlsaMIDIService::~AlsaMIDIService() {
  outputGate_->close();
  watch_.reset();
  gate_->close();
  close();
}

OSStatus AlsaMIDIService::MIDIClientCreateWithBlock(const std::string& name, Ref& outClient,
                                                    MIDINotifyBlock block) {
  const OSStatus result = MIDIServiceEngine::MIDIClientCreateWithBlock(name, outClient, std::move(block));
  if (result == noErr && sequencer_ != nullptr && !isNamed_.exchange(true)) {
    sequencer_->setName(alsa::readableText(name));
  }
  return result;
}

OSStatus AlsaMIDIService::MIDIObjectSetStringProperty(Ref object, std::string_view key,
                                                      std::string_view value) {
  const OSStatus result = MIDIServiceEngine::MIDIObjectSetStringProperty(object, key, value);
  if (result == noErr && key == kMIDIPropertyName) {
    if (const auto port = ownPortOf(object)) {
      sequencer_->renamePort(*port, alsa::readableText(value));
    }
  }
  return result;
}

karvex::foundation::ReadOutcome AlsaMIDIService::takeEvents() {
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

void AlsaMIDIService::takeEvent(const snd_seq_event_t* event, Incoming& incoming) {
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

void AlsaMIDIService::handOn(Incoming& incoming) {
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
  const auto list = packetAt(machAbsoluteTime(), incoming.bytes);
  if (isForListener) {
    sendFromEquipment(endpoint, list);
  } else {
    sendFromOutside(endpoint, streamOf(incoming.from), list);
  }
  incoming.bytes.clear();
}

/// On the queue. The first news sets the time, so that a stream of them can't put the look off for ever.
void AlsaMIDIService::lookSoon() {
  if (std::exchange(isLookDue_, true)) {
    return;
  }
  timer_ = karvex::foundation::Timer::oneShot(runtime().clock(), queue_, settlingTime, [this, gate = gate_] {
    gate->pass([this] {
      isLookDue_ = false;
      look();
    });
  });
}

/// On the queue, or in the constructor.
void AlsaMIDIService::look() {
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
  edit([&](SetupEditor& editor) {
    const std::lock_guard lock(mutex_);
    drivers_ = std::move(drivers);
    model_.update(equipment, editor);
  });
  routesChanged();
}

/// What is listened to becomes what somebody wants to hear. The kernel tells what the former is: it forgets
/// what is listened to when a port goes.
void AlsaMIDIService::routesChanged() {
  if (sequencer_ != nullptr) {
    followRoutes();
  }
}

void AlsaMIDIService::followRoutes() {
  const std::lock_guard turn(routesMutex_);
  std::set<PortAddress> wanted;
  const auto refs = heardSources();
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

void AlsaMIDIService::ownEndpointAdded(Ref endpoint) {
  if (sequencer_ == nullptr) {
    return;
  }
  std::optional<std::string> name;
  static_cast<void>(MIDIServiceEngine::MIDIObjectGetStringProperty(endpoint, kMIDIPropertyName, name));
  const bool isSource = inspect([endpoint](const engine::MIDISetup& setup) {
    const auto* object = setup.find(endpoint);
    return object != nullptr && object->kind == MIDIObjectKind::source;
  });
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
    auto queue = std::make_shared<karvex::foundation::SerialQueue>(runtime().globalQueue());
    auto emitter = std::make_shared<alsa::Emitter>(
        outputs(), sequencer_, queue,
        alsa::Emitter::Source{
            .port = [this, endpoint] { return ownPortOf(endpoint); },
            .sysExRate =
                [this, endpoint](PortAddress listener) { return sysExRateOf(endpoint, listener.client); }});
    listenAsEquipment(endpoint, *queue,
                      [emitter = std::move(emitter)](const MIDIPacketList& list, ConnectionToken /*token*/) {
                        emitter->send(list);
                      });
  }
}

void AlsaMIDIService::ownEndpointRemoved(Ref endpoint) {
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

std::optional<int> AlsaMIDIService::ownPortOf(Ref endpoint) const {
  const std::lock_guard lock(mutex_);
  const auto found = ownPorts_.find(endpoint);
  return found != ownPorts_.end() ? std::optional(found->second) : std::nullopt;
}

engine::MIDIRouting::Receiver AlsaMIDIService::makeReceiver(Ref destination) {
  auto queue = std::make_shared<karvex::foundation::SerialQueue>(runtime().globalQueue());
  auto outlet = std::make_shared<Outlet>(
      outputs(), queue,
      Outlet::Route{.from = sequencer_->mouth(),
                    .place = [this, destination] { return placeOf(destination); },
                    .sysExRate = [this, destination]() -> std::optional<std::int64_t> {
                      const auto place = placeOf(destination);
                      return place ? sysExRateOf(destination, place->client) : std::nullopt;
                    }});
  auto& target = *queue;
  MIDIReadBlock block = [outlet = std::move(outlet)](const MIDIPacketList& list, ConnectionToken /*token*/) {
    outlet->send(list);
  };
  return std::make_shared<engine::MIDIReceiver>(runtime(), target, std::move(block));
}

std::optional<PortAddress> AlsaMIDIService::placeOf(Ref destination) const {
  const std::lock_guard lock(mutex_);
  return model_.addressOf(destination);
}

/// Drivers drop what their buffer has no room for. The standard's rate where none is set.
std::optional<std::int64_t> AlsaMIDIService::sysExRateOf(Ref endpoint, int client) const {
  {
    const std::lock_guard lock(mutex_);
    if (!drivers_.contains(client)) {
      return std::nullopt;
    }
  }
  std::int32_t speed = 3125;
  static_cast<void>(
      MIDIServiceEngine::MIDIObjectGetIntegerProperty(endpoint, kMIDIPropertyMaxSysExSpeed, speed));
  return std::max(speed, slowestSysEx);
}

}  // namespace

std::shared_ptr<MIDIService> makeAlsaMIDIService(karvex::foundation::Runtime& runtime) {
  return std::make_shared<AlsaMIDIService>(runtime);
}

}  // namespace midikit::io
