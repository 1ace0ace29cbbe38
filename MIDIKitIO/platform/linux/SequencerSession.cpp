#include "MIDIKitIO/platform/linux/SequencerSession.hpp"

#include <algorithm>
#include <chrono>

#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"
#include "MIDIKitIO/platform/linux/Emitter.hpp"
#include "MIDIKitIO/platform/linux/SysfsCards.hpp"
#include "foundation/Log.hpp"

namespace midikit::io::alsa {

using engine::MIDIObjectKind;
using engine::SetupEditor;
using karvex::foundation::SerialQueue;

namespace {

using namespace std::chrono_literals;

/// From the first news of a change until it is looked at: what comes together is told together.
constexpr auto settlingTime = 20ms;
/// So many events are taken before others get their turn on the queue.
constexpr std::size_t eventsAtOnce = 512;
/// What came from one port is handed on at the latest when there is so much of it, in bytes.
constexpr std::size_t mostAtOnce = 65536;
/// In bytes a second; the usual one is the rate of a MIDI 1.0 cable.
constexpr std::int32_t usualSysExSpeed = 3125;
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

/// One of the kernel's own clients without a card: a through port, which sends back whatever comes to it.
bool isEcho(const SequencerClient& client) {
  return client.isKernel && !client.card && client.number != SND_SEQ_CLIENT_SYSTEM;
}

}  // namespace

SequencerSession::SequencerSession(karvex::foundation::Runtime& runtime, engine::MIDIDriverHost& host,
                                   std::shared_ptr<Sequencer> sequencer)
    : runtime_(runtime),
      host_(host),
      sequencer_(std::move(sequencer)),
      queue_(runtime.globalQueue(), "MIDI sequencer"),
      gate_(std::make_shared<engine::BlockGate>(runtime)),
      ownPorts_(*sequencer_),
      model_([this](Ref destination) { return makeReceiver(destination); }) {}

void SequencerSession::start() {
  look();
  input_.emplace(sequencer_->descriptor(), [this] { return takeEvents(); });
}

void SequencerSession::close() {
  outputGate_->close();
  input_.reset();
  gate_->close();
}

InputThreads::Intake SequencerSession::takeEvents() {
  const std::lock_guard lock(turn_);
  InputThreads::Intake intake;
  const bool isThere = sequencer_->input(eventsAtOnce, [&](const snd_seq_event_t* event) {
    intake.hasAny = true;
    takeEvent(event, intake.handovers);
  });
  handOn(intake.handovers);
  intake.hasGone = !isThere;
  return intake;
}

void SequencerSession::takeEvent(const snd_seq_event_t* event, engine::Handovers& handovers) {
  if (event == nullptr) {
    if (!std::exchange(isLossTold_, true)) {
      karvex::foundation::log::debug("MIDI input came too fast, and some is lost. This is told once.");
    }
    lookSoon();
    return;
  }
  const PortAddress from{event->source.client, event->source.port};
  if (from.client == SND_SEQ_CLIENT_SYSTEM) {
    handOn(handovers);
    takeNews(*event);
    return;
  }
  if (from != incoming_.from || event->dest.port != incoming_.to || incoming_.bytes.size() >= mostAtOnce) {
    handOn(handovers);
    incoming_.from = from;
    incoming_.to = event->dest.port;
  }
  decoder_.decode(*event, incoming_.bytes);
}

/// Whoever has gone gets nothing more from this moment on; the rest is looked at when all has settled.
void SequencerSession::takeNews(const snd_seq_event_t& event) {
  const PortAddress about{event.data.addr.client, event.data.addr.port};
  const bool isExit = event.type == SND_SEQ_EVENT_CLIENT_EXIT || event.type == SND_SEQ_EVENT_PORT_EXIT;
  const bool isChange = event.type >= SND_SEQ_EVENT_CLIENT_START && event.type <= SND_SEQ_EVENT_PORT_CHANGE;
  if (!isChange || about.client == sequencer_->client()) {
    return;
  }
  if (isExit) {
    const auto gone = event.type == SND_SEQ_EVENT_PORT_EXIT ? std::optional(about.port) : std::nullopt;
    const auto isThere = [client = about.client, gone](PortAddress place) {
      return place.client == client && (!gone || place.port == *gone);
    };
    const std::lock_guard lock(mutex_);
    model_.leave(about.client, gone);
    for (auto* connections : {&connections_, &refused_}) {
      std::erase_if(*connections, [&](const Connection& connection) {
        return isThere(connection.first) || isThere(connection.second);
      });
    }
  }
  lookSoon();
}

void SequencerSession::handOn(engine::Handovers& handovers) {
  if (incoming_.bytes.empty()) {
    return;
  }
  const auto list = packetAt(host_.machAbsoluteTime(), incoming_.bytes);
  if (incoming_.to == sequencer_->ear().port) {
    const auto source = [&] {
      const std::lock_guard lock(mutex_);
      return model_.sourceAt(incoming_.from);
    }();
    host_.sendFromEquipment(source, list, handovers);
  } else {
    host_.sendFromOutside(ownPorts_.endpointAt(incoming_.to), streamOf(incoming_.from), list, handovers);
  }
  incoming_.bytes.clear();
}

/// In its turn. The first news sets the time, so that a stream of them can't put the look off for ever.
void SequencerSession::lookSoon() {
  if (std::exchange(isLookDue_, true)) {
    return;
  }
  timer_ = karvex::foundation::Timer::oneShot(runtime_.clock(), queue_, settlingTime, [this, gate = gate_] {
    gate->pass([this] {
      const std::lock_guard lock(turn_);
      isLookDue_ = false;
      look();
    });
  });
}

/// In its turn, or at the start.
void SequencerSession::look() {
  auto clients = sequencer_->clients();
  std::map<int, CardFacts> cards;
  std::set<int> drivers;
  std::set<int> echoes;
  for (const auto& client : clients) {
    if (client.card && !cards.contains(*client.card)) {
      cards.emplace(*client.card, readCard(soundClass, *client.card));
    }
    if (client.isKernel) {
      drivers.insert(client.number);
    }
    if (isEcho(client)) {
      echoes.insert(client.number);
    }
  }
  const auto equipment = equipmentOf(std::move(clients), cards, sequencer_->client());
  host_.edit([&](SetupEditor& editor) {
    const std::lock_guard lock(mutex_);
    drivers_ = std::move(drivers);
    echoes_ = std::move(echoes);
    model_.update(equipment, editor);
  });
  followRoutes();
}

void SequencerSession::followRoutes() {
  const std::lock_guard turn(routesMutex_);
  followConnections();  // What the kernel hands on needn't be listened to.
  followSources();
}

/// The kernel tells what is listened to: it forgets it when a port goes.
void SequencerSession::followSources() {
  std::set<PortAddress> wanted;
  const auto refs = host_.wantedSources();
  {
    const std::lock_guard lock(mutex_);
    for (const Ref source : refs) {
      if (const auto address = model_.addressOf(source)) {
        wanted.insert(*address);
      }
    }
    heard_ = wanted;
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

/// The kernel is asked once for each connection, and again when one of its ports has gone and is back: a user
/// may have ended it meanwhile.
void SequencerSession::followConnections() {
  const auto pairs = host_.plainThruConnections();
  std::set<Connection> wanted;
  std::vector<Connection> ended;
  std::vector<Connection> begun;
  {
    const std::lock_guard lock(mutex_);
    for (const auto& [source, destination] : pairs) {
      const auto from = model_.addressOf(source);
      const auto to = model_.addressOf(destination);
      if (from && to && !(from == to && echoes_.contains(from->client))) {
        wanted.emplace(*from, *to);
      }
    }
    std::ranges::set_difference(connections_, wanted, std::back_inserter(ended));
    std::ranges::set_difference(wanted, connections_, std::back_inserter(begun));
    connections_ = wanted;
  }
  for (const auto& [from, to] : ended) {
    sequencer_->disconnectOthers(from, to);
  }
  for (const auto& connection : begun) {
    const bool isMade = sequencer_->connectOthers(connection.first, connection.second) >= 0;
    const std::lock_guard lock(mutex_);
    if (!isMade) {
      refused_.insert(connection);
    } else {
      refused_.erase(connection);
    }
  }
}

bool SequencerSession::connectsByItself(Ref source, Ref destination) const {
  const std::lock_guard lock(mutex_);
  const auto from = model_.addressOf(source);
  const auto to = model_.addressOf(destination);
  return !from || !to || !refused_.contains({*from, *to});
}

void SequencerSession::addEndpoint(Ref endpoint, MIDIObjectKind kind) {
  if (kind == MIDIObjectKind::source) {
    listenTo(endpoint);  // Before anyone can see it.
  }
  refreshEndpoint(endpoint, kind);
}

void SequencerSession::listenTo(Ref endpoint) {
  auto queue = std::make_shared<SerialQueue>(runtime_.globalQueue());
  auto emitter = std::make_shared<Emitter>(
      outputs(), sequencer_, queue,
      Emitter::Source{
          .port = [this, endpoint] { return ownPorts_.portOf(endpoint); },
          .sysExRate = [this,
                        endpoint](PortAddress listener) { return sysExRateOf(endpoint, listener.client); }});
  host_.listenAsEquipment(
      endpoint, *queue,
      [emitter](const MIDIPacketList& list, ConnectionToken /*token*/) { emitter->send(list); },
      engine::ListReceiver::Manner::neverWaits);
}

void SequencerSession::refreshEndpoint(Ref endpoint, MIDIObjectKind kind) {
  const auto name = host_.text(endpoint, kMIDIPropertyName);
  ownPorts_.show(endpoint, {.name = readableText(name.value_or(std::string())),
                            .isPrivate = host_.number(endpoint, kMIDIPropertyPrivate).value_or(0) == 1,
                            .direction = kind == MIDIObjectKind::source ? Sequencer::Direction::source
                                                                        : Sequencer::Direction::destination});
}

engine::MIDIRouting::Receiver SequencerSession::makeReceiver(Ref destination) {
  auto queue = std::make_shared<SerialQueue>(runtime_.globalQueue());
  auto outlet = std::make_shared<Outlet>(
      outputs(), queue,
      Outlet::Route{.place = [this, destination] { return placeOf(destination); },
                    .sysExRate = [this, destination]() -> std::optional<std::int64_t> {
                      const auto place = placeOf(destination);
                      return place ? sysExRateOf(destination, place->client) : std::nullopt;
                    }});
  MIDIReadBlock block = [outlet](const MIDIPacketList& list, ConnectionToken /*token*/) {
    outlet->send(list);
  };
  return std::make_shared<engine::ListReceiver>(runtime_, *queue, std::move(block),
                                                engine::ListReceiver::Manner::neverWaits);
}

/// What goes into a through port comes back: nothing goes there while this program listens to it, or one that
/// sends whatever it hears to everyone would never come to an end.
std::optional<PortAddress> SequencerSession::placeOf(Ref destination) const {
  const std::lock_guard lock(mutex_);
  const auto place = model_.addressOf(destination);
  return place && echoes_.contains(place->client) && heard_.contains(*place) ? std::nullopt : place;
}

/// Drivers drop what their buffer has no room for.
std::optional<std::int64_t> SequencerSession::sysExRateOf(Ref endpoint, int client) const {
  {
    const std::lock_guard lock(mutex_);
    if (!drivers_.contains(client)) {
      return std::nullopt;
    }
  }
  return std::max(host_.number(endpoint, kMIDIPropertyMaxSysExSpeed).value_or(usualSysExSpeed), slowestSysEx);
}

}  // namespace midikit::io::alsa
