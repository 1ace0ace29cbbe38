#pragma once

#include <atomic>
#include <functional>
#include <optional>
#include <set>
#include <vector>

#include "MIDIKitIO/platform/MIDIPacketList.hpp"
#include "MIDIKitIO/platform/linux/EquipmentTree.hpp"
#include "MIDIKitIO/platform/linux/EventCoder.hpp"
#include "MIDIKitIO/platform/linux/Sequencer.hpp"
#include "MIDIKitIO/platform/linux/SysExPacer.hpp"
#include "foundation/Runtime.hpp"
#include "foundation/SerialQueue.hpp"

namespace midikit::io::alsa {

/// What all ways out share.
struct OutletContext {
  karvex::foundation::Runtime& runtime;
  Sequencer& sequencer;
  const std::atomic<bool>& isClosing;  ///< who waits, gives up
};

/// The way of lists from this program to one place outside: events at the pace that the other side stands,
/// behind each other. It waits on a queue of its own, so that nothing else stands still meanwhile.
class Outlet {
 public:
  struct Target {
    PortAddress address;
    /// Of a driver, which drops what it has no room for: its pace for system exclusive messages.
    std::optional<std::int64_t> bytesPerSecond;
  };

  /// How long another program may leave no room for one event before the rest of the list is dropped, and
  /// all that comes after it while there still is none.
  static constexpr std::chrono::seconds patience{1};

  explicit Outlet(const OutletContext& context) : context_(context), queue_(context.runtime.globalQueue()) {}

  karvex::foundation::SerialQueue& queue() { return queue_; }

  /// On the queue. `from` is the port of this program that the list comes from; none for the common one. A
  /// packet whose time stamp is to come goes out then.
  void send(const MIDIPacketList& list, const Target& target, std::optional<int> from);

 private:
  using TimePoint = karvex::foundation::TimePoint;

  /// When a packet is to go out.
  struct Departure {
    TimePoint wanted;
    bool isLater;  ///< by the kernel's clock
    SysExPacer& pacer;
  };

  bool sendEvent(snd_seq_event_t& event, const Target& target, std::optional<int> from,
                 const Departure& departure);
  bool sendNow(snd_seq_event_t& event, const Target& target, std::optional<int> from,
               std::optional<karvex::foundation::Duration> delay);
  bool waitUntil(TimePoint due) const;

  OutletContext context_;
  karvex::foundation::SerialQueue queue_;
  EventEncoder encoder_;
  SysExPacer pacer_;
  std::set<PortAddress> prepared_;
  bool isDropping_ = false;  ///< nothing has gone out since a list was dropped, which was told then
};

}  // namespace midikit::io::alsa
