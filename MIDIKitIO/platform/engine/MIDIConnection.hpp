#pragma once

#include <cstddef>
#include <mutex>
#include <optional>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "MIDIKitIO/platform/engine/ListConversion.hpp"
#include "MIDIKitIO/platform/engine/MIDIList.hpp"
#include "foundation/run/Clock.hpp"
#include "foundation/run/WaitingLine.hpp"

namespace midikit::io::engine {

/// Between a port and a source: the lists that wait for the port's reader, in the order in which they came.
///
/// A connection ends late: from hold() on its lists wait, and resume() lets it go on as if nothing had
/// happened. For every call:
///
/// Thread-safe: yes.
/// Realtime-safe: no, it locks and allocates.
class MIDIConnection {
 public:
  using TimePoint = karvex::foundation::TimePoint;

  /// In bytes: so much may come while the connection is held, some of the longest system exclusive messages.
  /// It ends when there is more, so that nobody's traffic fills the memory for a reader that has left.
  static constexpr std::size_t mostHeld = 4 * ListConverter::longestSysEx;

  explicit MIDIConnection(ConnectionToken token) : token_(token) {}

  void add(SharedMIDIList list);
  /// From now on nothing is handed out. The owner ends the connection at that moment, unless it is resumed.
  void hold(TimePoint until);
  /// Goes on, with this token for all that waits. False if the connection has ended.
  bool resume(ConnectionToken token);
  /// For good. What waits is dropped.
  void end();

  /// When a connection ends that isn't in use: the moment for hold(). None while it is in use.
  std::optional<TimePoint> endsAt() const;

  struct Delivery {
    SharedMIDIList list;
    ConnectionToken token;
  };
  /// Takes the list out whose turn it is; none while nothing may be handed out.
  std::optional<Delivery> next();
  /// How many lists wait.
  std::size_t waiting() const;

  ListConverter converter;  ///< used on the reader's queue alone

 private:
  enum class State { inUse, held, ended };

  mutable std::mutex mutex_;  ///< of what follows
  State state_ = State::inUse;
  ConnectionToken token_;
  TimePoint endsAt_{};
  karvex::foundation::WaitingLine<SharedMIDIList> waiting_;
  std::size_t held_ = 0;  ///< in bytes
};

}  // namespace midikit::io::engine
