#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "MIDIKitIO/platform/MIDIPacketList.hpp"
#include "MIDIKitIO/platform/linux/EventCoder.hpp"
#include "MIDIKitIO/platform/linux/EventSink.hpp"
#include "MIDIKitIO/platform/linux/SysExPacer.hpp"
#include "foundation/run/Runtime.hpp"
#include "foundation/run/SerialQueue.hpp"
#include "foundation/run/Timer.hpp"

namespace midikit::io::alsa {

/// Lets the work of all outlets pass until it is closed. The work never waits, so neither does close() for
/// long.
class OutputGate {
 public:
  template <typename Work>
  void pass(const Work& work) {
    ++inside_;
    if (!isClosed_) {
      work();
    }
    if (--inside_ == 0 && isClosed_) {
      inside_.notify_all();
    }
  }
  /// No work begins any more, and none is under way when this returns.
  void close() {
    isClosed_ = true;
    for (int inside = inside_; inside != 0; inside = inside_) {
      inside_.wait(inside);
    }
  }

 private:
  // Counted before the look at isClosed_, as close() looks at the count after closing.
  std::atomic<int> inside_ = 0;
  std::atomic<bool> isClosed_ = false;
};

/// What all ways out share. The runtime must outlive them.
struct OutletContext {
  karvex::foundation::Runtime& runtime;
  std::shared_ptr<EventSink> sink;
  std::shared_ptr<OutputGate> gate;
};

/// The way of lists from this program to one place outside, at the pace that the other side keeps. What can't
/// go yet waits in a backlog, in the order of its time; a timer on the queue takes it up again, so nobody who
/// is slow holds a thread. On the queue alone.
class Outlet : public std::enable_shared_from_this<Outlet> {
 public:
  using TimePoint = karvex::foundation::TimePoint;
  using Duration = karvex::foundation::Duration;

  struct Route {
    /// The port of a source, to which the place has connected itself. None for a port of the outlet's own.
    std::optional<int> from;
    /// Asked for each event: whoever takes over the address of one that left must not get what was meant for
    /// it. None while there is nobody.
    std::function<std::optional<PortAddress>()> place;
    /// In bytes a second, asked for each piece of a system exclusive message; none where nothing is lost.
    std::function<std::optional<std::int64_t>()> sysExRate;
  };

  /// What may wait, in bytes: sizeof(snd_seq_event_t) for each event, and the bytes of a system exclusive
  /// one. It has room for some 75,000 short messages. What comes while it is full is dropped, whole messages
  /// at a time, and one log line says so; a message that has begun to go may exceed it by longestMessage.
  static constexpr std::size_t backlogLimit = std::size_t{2} << 20U;
  static constexpr std::size_t longestMessage = std::size_t{1} << 20U;

  /// So long before its time a packet that is wanted later is handed to the kernel's clock; a busy machine
  /// may wake this program as much too late.
  static constexpr Duration lead = std::chrono::milliseconds(100);
  /// So long after the last of them the kernel's queue is kept.
  static constexpr Duration linger = std::chrono::seconds(1);

  Outlet(OutletContext context, std::shared_ptr<karvex::foundation::SerialQueue> queue, Route route)
      : context_(std::move(context)), queue_(std::move(queue)), route_(std::move(route)) {}

  ~Outlet();
  Outlet(const Outlet&) = delete;
  Outlet& operator=(const Outlet&) = delete;

  /// A packet whose time stamp is to come goes out then.
  void send(const MIDIPacketList& list);

 private:
  struct Waiting {
    snd_seq_event_t event;
    std::vector<unsigned char> bytes;  ///< of a system exclusive event
    bool isLater;                      ///< for the kernel's clock
    std::optional<TimePoint> due;      ///< when it may go at the earliest, once that is known
  };
  using Backlog = std::multimap<TimePoint, Waiting>;

  bool attach(TimePoint now);
  bool connect(PortAddress place);
  void accept(snd_seq_event_t& event, TimePoint wanted, TimePoint now);
  bool goesAtOnce(snd_seq_event_t& event, TimePoint wanted, TimePoint now);
  bool hasPlaceFor(const snd_seq_event_t& event);
  void drain();
  bool go(TimePoint wanted, Waiting& waiting, TimePoint now);
  bool transmit(snd_seq_event_t& event, const Moment& moment);
  std::optional<Schedule> scheduleFor(const Waiting& waiting, TimePoint now);
  bool waitForRoom(TimePoint now);
  void leaveOut(std::string_view reason);
  void dropAll();
  void setTimer();

  OutletContext context_;
  std::shared_ptr<karvex::foundation::SerialQueue> queue_;
  Route route_;
  EventEncoder encoder_;
  SysExPacer pacer_;
  Wire wire_;
  std::optional<int> ownPort_;
  bool isAttached_ = false;
  TimePoint attachedAt_{};   ///< when the place was last asked for
  TimePoint connectedAt_{};  ///< when the connection was last looked at
  bool takesRest_ = false;   ///< of the system exclusive message that has begun
  bool isLossTold_ = false;
  Backlog backlog_;
  std::size_t waitingBytes_ = 0;
  std::optional<TimePoint> blockedSince_;  ///< when the other side was first found without room
  TimePoint wake_{};                       ///< when the first that waits is worth another try
  QueueHold kernelQueue_;
  TimePoint scheduledUntil_{};
  karvex::foundation::Timer timer_;
  TimePoint timerAt_ = TimePoint::max();  ///< when it calls; the farthest moment while it isn't set
};

}  // namespace midikit::io::alsa
