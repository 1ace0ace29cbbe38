#include "MIDIKitIO/platform/linux/Outlet.hpp"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <string>
#include <utility>

#include "foundation/Log.hpp"

namespace midikit::io::alsa {

using karvex::foundation::Duration;

namespace {

using namespace std::chrono_literals;

/// How long it takes at most until who waits sees that it must give up.
constexpr Duration longestNap = 20ms;
/// Between two tries to get rid of an event for which another program had no room.
constexpr Duration retryPause = 2ms;
/// What is wanted later than that, is wanted then: ten years, which the kernel's clock can count.
constexpr Duration farthest = 87600h;

bool hasNoRoom(int result) {
  return result == -EAGAIN || result == -ENOMEM;
}

}  // namespace

void Outlet::send(const MIDIPacketList& list, const Target& target, std::optional<int> from) {
  for (std::size_t index = 0; index < list.packetCount(); ++index) {
    const auto packet = list.packet(index);
    const auto now = context_.runtime.clock().now();
    const TimePoint wanted{Duration(static_cast<Duration::rep>(packet.timeStamp))};
    SysExPacer ofPacket;  // What goes out later doesn't hold up what goes out before it.
    const bool isLater = wanted > now;
    const Departure departure{
        .wanted = std::min(wanted, now + farthest), .isLater = isLater, .pacer = isLater ? ofPacket : pacer_};
    bool isGoing = true;
    encoder_.encode(packet.bytes, [&](snd_seq_event_t& event) {
      isGoing = sendEvent(event, target, from, departure);
      return isGoing;
    });
    if (!isGoing) {
      return;
    }
  }
}

bool Outlet::sendEvent(snd_seq_event_t& event, const Target& target, std::optional<int> from,
                       const Departure& departure) {
  const auto now = context_.runtime.clock().now();
  const bool isPaced = target.bytesPerSecond && event.type == SND_SEQ_EVENT_SYSEX;
  const std::int64_t bytes = isPaced ? static_cast<std::int64_t>(event.data.ext.len) : 0;
  const auto wanted = departure.isLater ? departure.wanted : now;
  const auto due = departure.pacer.next(wanted, bytes, target.bytesPerSecond.value_or(1));
  if (departure.isLater) {
    return sendNow(event, target, from, std::max(due - now, Duration::zero()));
  }
  return waitUntil(due) && sendNow(event, target, from, std::nullopt);
}

bool Outlet::sendNow(snd_seq_event_t& event, const Target& target, std::optional<int> from,
                     std::optional<Duration> delay) {
  auto& clock = context_.runtime.clock();
  const auto end = clock.now() + (isDropping_ ? Duration::zero() : Duration(patience));
  bool mayPrepare = !from;
  if (mayPrepare && prepared_.insert(target.address).second) {
    context_.sequencer.prepare(target.address);
  }
  while (!context_.isClosing) {
    const int result = context_.sequencer.send(event, target.address, from, delay);
    if (result >= 0) {
      isDropping_ = false;
      return true;
    }
    if (hasNoRoom(result) && clock.now() < end) {
      clock.sleepFor(retryPause);
    } else if (!hasNoRoom(result) && std::exchange(mayPrepare, false)) {
      context_.sequencer.prepare(target.address);  // It may be another device there than before.
    } else {
      if (!std::exchange(isDropping_, true)) {
        karvex::foundation::log::debug("MIDI output is dropped: " + std::string(snd_strerror(result)));
      }
      return false;
    }
  }
  return false;
}

bool Outlet::waitUntil(TimePoint due) const {
  auto& clock = context_.runtime.clock();
  while (!context_.isClosing && clock.now() < due) {
    clock.sleepUntil(std::min(due, clock.now() + longestNap));
  }
  return !context_.isClosing;
}

}  // namespace midikit::io::alsa
