#include "MIDIKitIO/platform/linux/Sequencer.hpp"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>

#include "MIDIKitIO/platform/linux/InputPool.hpp"

namespace midikit::io::alsa {

namespace {

constexpr const char* node = "/dev/snd/seq";
/// In cells of 28 bytes, the most that the kernel gives a client. A piece of a system exclusive message takes
/// eleven.
constexpr std::size_t poolCells = 2000;
constexpr std::size_t inputBuffer = 65536;
/// Other programs send to the same place; so many cells, or an eighth of a small pool, are left for them.
constexpr int cellsForOthers = 16;
/// So much of the cells beyond that is used for so long without another look.
constexpr int shareOfFree = 4;
constexpr auto timeOfTrust = std::chrono::milliseconds(1);

constexpr unsigned readable = SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_SUBS_READ;
constexpr unsigned writable = SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_SUBS_WRITE;
constexpr unsigned midiPort = SND_SEQ_PORT_TYPE_MIDI_GENERIC | SND_SEQ_PORT_TYPE_APPLICATION;

std::string textOf(int errorNumber) {
  return std::system_category().message(errorNumber);
}

SequencerPort portOf(const snd_seq_port_info_t* info) {
  // "No export" keeps third parties from connecting the port; whoever asks for itself may.
  const unsigned capabilities = snd_seq_port_info_get_capability(info);
  return {.number = snd_seq_port_info_get_port(info),
          .name = snd_seq_port_info_get_name(info),
          .isReadable = (capabilities & readable) == readable,
          .isWritable = (capabilities & writable) == writable};
}

std::vector<SequencerPort> portsOf(snd_seq_t* handle, int client) {
  std::vector<SequencerPort> ports;
  snd_seq_port_info_t* info = nullptr;
  snd_seq_port_info_alloca(&info);
  snd_seq_port_info_set_client(info, client);
  snd_seq_port_info_set_port(info, -1);
  while (snd_seq_query_next_port(handle, info) >= 0) {
    ports.push_back(portOf(info));
  }
  return ports;
}

/// Everybody at the other end of a port's connections of one kind.
std::vector<PortAddress> subscribers(snd_seq_t* handle, PortAddress port, snd_seq_query_subs_type_t kind) {
  std::vector<PortAddress> all;
  snd_seq_query_subscribe_t* query = nullptr;
  snd_seq_query_subscribe_alloca(&query);
  const snd_seq_addr_t root = {.client = static_cast<unsigned char>(port.client),
                               .port = static_cast<unsigned char>(port.port)};
  snd_seq_query_subscribe_set_root(query, &root);
  snd_seq_query_subscribe_set_type(query, kind);
  for (int index = 0;; ++index) {
    snd_seq_query_subscribe_set_index(query, index);
    if (snd_seq_query_port_subscribers(handle, query) < 0) {
      return all;
    }
    const auto* address = snd_seq_query_subscribe_get_addr(query);
    all.push_back({address->client, address->port});
  }
}

void describe(snd_seq_port_subscribe_t* connection, PortAddress from, PortAddress to) {
  const auto address = [](PortAddress place) {
    return snd_seq_addr_t{.client = static_cast<unsigned char>(place.client),
                          .port = static_cast<unsigned char>(place.port)};
  };
  const auto sender = address(from);
  const auto receiver = address(to);
  snd_seq_port_subscribe_set_sender(connection, &sender);
  snd_seq_port_subscribe_set_dest(connection, &receiver);
}

}  // namespace

std::shared_ptr<Sequencer> Sequencer::open(std::optional<Unavailable>& why) {
  using Reason = Unavailable::Reason;
  const auto fail = [&why](Reason reason, const std::string& text) {
    why = Unavailable{reason, std::string(node) + ": " + text};
    return nullptr;
  };
  // The library would tell of a missing node on standard error, and give no reason.
  const int probe = ::open(node, O_RDWR | O_CLOEXEC | O_NONBLOCK);
  if (probe < 0) {
    const int error = errno;
    const bool isForbidden = error == EACCES || error == EPERM;
    const bool isAbsent = error == ENOENT || error == ENODEV || error == ENXIO || error == ENOTDIR;
    return fail(isForbidden ? Reason::forbidden
                : isAbsent  ? Reason::absent
                            : Reason::exhausted,
                textOf(error));
  }
  ::close(probe);
  snd_seq_t* handle = nullptr;
  if (const int failure = snd_seq_open(&handle, "hw", SND_SEQ_OPEN_DUPLEX, SND_SEQ_NONBLOCK); failure < 0) {
    return fail(Reason::exhausted, textOf(-failure));
  }
  const std::shared_ptr<Sequencer> sequencer(new Sequencer(handle));
  return sequencer->setUp() ? sequencer : fail(Reason::exhausted, "no port can be made");
}

bool Sequencer::setUp() {
  client_ = snd_seq_client_id(handle_);
  snd_seq_set_client_name(handle_, "MIDIKitIO");
  snd_seq_set_client_pool_input(handle_, poolCells);
  snd_seq_set_client_pool_output(handle_, poolCells);
  snd_seq_set_input_buffer_size(handle_, inputBuffer);
  ear_ = snd_seq_create_simple_port(handle_, "listener", SND_SEQ_PORT_CAP_WRITE | SND_SEQ_PORT_CAP_NO_EXPORT,
                                    midiPort);
  if (client_ < 0 || ear_ < 0) {
    return false;
  }
  return listen({SND_SEQ_CLIENT_SYSTEM, SND_SEQ_PORT_SYSTEM_ANNOUNCE}) >= 0;
}

Sequencer::~Sequencer() {
  snd_seq_close(handle_);
}

int Sequencer::descriptor() const {
  pollfd watched{};
  snd_seq_poll_descriptors(handle_, &watched, 1, POLLIN);
  return watched.fd;
}

std::vector<SequencerClient> Sequencer::clients() const {
  std::vector<SequencerClient> all;
  snd_seq_client_info_t* info = nullptr;
  snd_seq_client_info_alloca(&info);
  snd_seq_client_info_set_client(info, -1);
  while (snd_seq_query_next_client(handle_, info) >= 0) {
    const int number = snd_seq_client_info_get_client(info);
    const int card = snd_seq_client_info_get_card(info);
    all.push_back({.number = number,
                   .name = snd_seq_client_info_get_name(info),
                   .isKernel = snd_seq_client_info_get_type(info) == SND_SEQ_KERNEL_CLIENT,
                   .card = card >= 0 ? std::optional(card) : std::nullopt,
                   .ports = portsOf(handle_, number)});
  }
  return all;
}

void Sequencer::setName(const std::string& name) {
  snd_seq_set_client_name(handle_, name.c_str());
}

std::optional<int> Sequencer::addPort(const std::string& name, Direction direction) {
  const int port =
      snd_seq_create_simple_port(handle_, name.c_str(), direction == Direction::source ? readable : writable,
                                 midiPort | SND_SEQ_PORT_TYPE_SOFTWARE);
  return port >= 0 ? std::optional(port) : std::nullopt;
}

void Sequencer::renamePort(int port, const std::string& name) {
  snd_seq_port_info_t* info = nullptr;
  snd_seq_port_info_alloca(&info);
  if (snd_seq_get_port_info(handle_, port, info) >= 0) {
    snd_seq_port_info_set_name(info, name.c_str());
    snd_seq_set_port_info(handle_, port, info);
  }
}

void Sequencer::removePort(int port) {
  snd_seq_delete_simple_port(handle_, port);
}

std::vector<PortAddress> Sequencer::listeners(int port) const {
  return subscribers(handle_, {client_, port}, SND_SEQ_QUERY_SUBS_READ);
}

std::set<PortAddress> Sequencer::heard() const {
  std::set<PortAddress> sources;
  for (const auto source : subscribers(handle_, ear(), SND_SEQ_QUERY_SUBS_WRITE)) {
    if (source.client != SND_SEQ_CLIENT_SYSTEM) {
      sources.insert(source);
    }
  }
  return sources;
}

int Sequencer::listen(PortAddress source) {
  return snd_seq_connect_from(handle_, ear_, source.client, source.port);
}

int Sequencer::stopListening(PortAddress source) {
  return snd_seq_disconnect_from(handle_, ear_, source.client, source.port);
}

std::optional<int> Sequencer::makePort() {
  const int port = snd_seq_create_simple_port(handle_, "speaker",
                                              SND_SEQ_PORT_CAP_READ | SND_SEQ_PORT_CAP_NO_EXPORT, midiPort);
  return port >= 0 ? std::optional(port) : std::nullopt;
}

int Sequencer::connect(const Wire& wire) {
  return connectOthers({client_, wire.from}, wire.to);
}

bool Sequencer::isConnected(const Wire& wire) const {
  return hasConnection({client_, wire.from}, wire.to);
}

bool Sequencer::hasConnection(PortAddress source, PortAddress destination) const {
  snd_seq_port_subscribe_t* connection = nullptr;
  snd_seq_port_subscribe_alloca(&connection);
  describe(connection, source, destination);
  return snd_seq_get_port_subscription(handle_, connection) >= 0;
}

/// "Busy" means that they are connected, or that one of them is someone's alone.
int Sequencer::connectOthers(PortAddress source, PortAddress destination) {
  snd_seq_port_subscribe_t* connection = nullptr;
  snd_seq_port_subscribe_alloca(&connection);
  describe(connection, source, destination);
  const int result = snd_seq_subscribe_port(handle_, connection);
  return result == -EBUSY && hasConnection(source, destination) ? 0 : result;
}

int Sequencer::disconnectOthers(PortAddress source, PortAddress destination) {
  snd_seq_port_subscribe_t* connection = nullptr;
  snd_seq_port_subscribe_alloca(&connection);
  describe(connection, source, destination);
  return snd_seq_unsubscribe_port(handle_, connection);
}

/// What is longer than all the room is tried when all of it is free. A part of what is found is used without
/// another look, so that a burst doesn't ask the kernel for each event.
bool Sequencer::takeRoom(const snd_seq_event_t& event, int client, karvex::foundation::TimePoint now) {
  const int cells =
      snd_seq_ev_is_variable(&event) ? static_cast<int>(event.data.ext.len / sizeof(event)) + 2 : 1;
  auto& known = known_.at(static_cast<std::size_t>(client));
  if (cells <= known.cells && now < known.until) {
    known.cells -= cells;
    return true;
  }
  known = {};
  const auto room = inputPool(descriptor(), client);
  if (!room) {
    return true;
  }
  const int wanted = std::min(cells + std::min(cellsForOthers, room->all / 8), room->all);
  known = {.cells = (room->free - wanted) / shareOfFree, .until = now + timeOfTrust};
  return room->free >= wanted;
}

int Sequencer::send(snd_seq_event_t& event, const Wire& wire, const Moment& moment) {
  using std::chrono::duration_cast;
  using std::chrono::seconds;
  snd_seq_ev_set_source(&event, static_cast<unsigned char>(wire.from));
  if (wire.isShared) {
    snd_seq_ev_set_dest(&event, static_cast<unsigned char>(wire.to.client),
                        static_cast<unsigned char>(wire.to.port));
  } else {
    snd_seq_ev_set_subs(&event);
  }
  if (const auto* schedule = moment.schedule) {
    const auto whole = duration_cast<seconds>(schedule->delay);
    const snd_seq_real_time_t when = {.tv_sec = static_cast<unsigned>(whole.count()),
                                      .tv_nsec = static_cast<unsigned>((schedule->delay - whole).count())};
    event.flags = static_cast<unsigned char>((event.flags & SND_SEQ_EVENT_LENGTH_MASK) |
                                             SND_SEQ_TIME_STAMP_REAL | SND_SEQ_TIME_MODE_REL);
    event.time.time = when;
    event.queue = static_cast<unsigned char>(*schedule->queue);
  } else {
    snd_seq_ev_set_direct(&event);
  }
  const std::lock_guard lock(mutex_);  // So that two that look for room don't find the same.
  if (wire.isShared && !isConnected(wire)) {
    return -ENOTCONN;
  }
  return takeRoom(event, wire.to.client, moment.now)
             ? std::min(snd_seq_event_output_direct(handle_, &event), 0)
             : -EAGAIN;
}

/// Keeps the sequencer open until the queue has ended.
struct Sequencer::RunningQueue {
  RunningQueue(std::shared_ptr<Sequencer> itsSequencer, int itsNumber)
      : sequencer(std::move(itsSequencer)), number(itsNumber) {}
  ~RunningQueue() { sequencer->endQueue(number); }
  RunningQueue(const RunningQueue&) = delete;
  RunningQueue& operator=(const RunningQueue&) = delete;

  const std::shared_ptr<Sequencer> sequencer;
  const int number;
};

QueueHold Sequencer::queue() {
  const std::lock_guard lock(mutex_);
  if (auto running = queue_.lock()) {
    return running;
  }
  const int number = snd_seq_alloc_named_queue(handle_, "MIDIKitIO");
  if (number < 0) {
    return nullptr;
  }
  snd_seq_start_queue(handle_, number, nullptr);
  snd_seq_drain_output(handle_);
  const auto started = std::make_shared<RunningQueue>(shared_from_this(), number);
  QueueHold hold(started, &started->number);
  queue_ = hold;
  return hold;
}

void Sequencer::endQueue(int number) {
  const std::lock_guard lock(mutex_);
  snd_seq_free_queue(handle_, number);
}

bool Sequencer::input(std::size_t most, const std::function<void(const snd_seq_event_t*)>& sink) {
  for (std::size_t taken = 0; taken < most; ++taken) {
    snd_seq_event_t* event = nullptr;
    const int result = snd_seq_event_input(handle_, &event);
    if (result == -EAGAIN) {
      return true;
    }
    if (result == -ENOSPC) {
      sink(nullptr);
      continue;
    }
    if (result < 0) {
      return result != -ENODEV;
    }
    if (event != nullptr) {
      sink(event);
    }
    if (snd_seq_event_input_pending(handle_, 0) <= 0) {
      return true;  // What the kernel has beyond that makes the descriptor ready again.
    }
  }
  return true;
}

}  // namespace midikit::io::alsa
