#pragma once

#include <alsa/asoundlib.h>

#include <memory>
#include <optional>

#include "MIDIKitIO/platform/linux/EquipmentTree.hpp"
#include "foundation/run/Clock.hpp"

namespace midikit::io::alsa {

/// From which port of this program to which place outside.
struct Wire {
  int from = 0;
  PortAddress to;
  bool isShared = false;  ///< other places are connected to the port, too
};

/// The number of a queue of the kernel's, which runs, and takes timer interrupts, as long as someone holds
/// it.
using QueueHold = std::shared_ptr<const int>;

/// An event's way through the kernel's clock.
struct Schedule {
  QueueHold queue;
  karvex::foundation::Duration delay;
};

/// When an event is sent, and when it is to arrive: at once if there is no schedule, which is null then.
struct Moment {
  karvex::foundation::TimePoint now;
  const Schedule* schedule = nullptr;
};

/// Where an Outlet sends its events. All operations may be called on any thread; none waits.
class EventSink {
 public:
  virtual ~EventSink() = default;

  /// A port for one connection; none if the sequencer has none left.
  virtual std::optional<int> makePort() = 0;
  virtual void removePort(int port) = 0;

  /// Connects both ends, which opens a device. 0, or a negative error number; 0 too if they are connected.
  virtual int connect(const Wire& wire) = 0;
  /// The kernel ends a connection with either of its ports, so whoever takes over an address has none.
  virtual bool isConnected(const Wire& wire) const = 0;

  /// Sends one event over a connection, at once or by a schedule. On a port that isn't shared the kernel
  /// itself sees to it that the connection still exists. 0, or a negative error number: -EAGAIN or -ENOMEM
  /// while there is no room on the other side, -ENOTCONN on a shared one when there is no connection.
  virtual int send(snd_seq_event_t& event, const Wire& wire, const Moment& moment) = 0;

  /// Null if the kernel has no queue left.
  virtual QueueHold queue() = 0;
};

}  // namespace midikit::io::alsa
