#include "MIDIKitIO/platform/linux/Outlet.hpp"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <string>
#include <utility>

#include "foundation/Log.hpp"

namespace midikit::io::alsa {

namespace {

using namespace std::chrono_literals;
using karvex::foundation::Duration;

/// Between two tries at a place without room, which says nothing when it has some again: an eighth of the
/// time that it has had none, within these bounds.
constexpr Duration shortestPause = 2ms;
constexpr Duration longestPause = 250ms;
/// For so long a connection that was there is not looked at again. The kernel sends nothing where there is
/// none.
constexpr Duration timeOfTrust = 1ms;
/// What is wanted later than that is wanted then: ten years, which the kernel's clock can count.
constexpr Duration farthest = 87600h;

constexpr unsigned char sysExStart = 0xF0;

bool hasNoRoom(int result) {
  return result == -EAGAIN || result == -ENOMEM;
}

std::size_t bytesIn(const snd_seq_event_t& event) {
  return snd_seq_ev_is_variable(&event) ? event.data.ext.len : 0;
}

/// A piece of a system exclusive message other than its first.
bool continuesMessage(const snd_seq_event_t& event) {
  return event.type == SND_SEQ_EVENT_SYSEX &&
         *static_cast<const unsigned char*>(event.data.ext.ptr) != sysExStart;
}

}  // namespace

void Outlet::send(const MIDIPacketList& list) {
  context_.gate->pass([&] {
    const auto now = context_.runtime.clock().now();
    if (!attach(now)) {
      return;
    }
    for (std::size_t index = 0; index < list.packetCount(); ++index) {
      const auto packet = list.packet(index);
      auto bytes = packet.bytes;
      const TimePoint stamp{Duration(static_cast<Duration::rep>(packet.timeStamp))};
      while (auto event = encoder_.next(bytes)) {
        accept(*event, std::clamp(stamp, now, now + farthest), now);
      }
    }
    drain();
  });
}

Outlet::~Outlet() {
  dropAll();
}

/// Whether there is somebody to send to. Whatever waits for one that left goes with it.
bool Outlet::attach(TimePoint now) {
  const auto place = route_.place();
  attachedAt_ = now;
  const bool isKnown = isAttached_ && wire_.to == place;
  if (isKnown && (wire_.isShared || now < connectedAt_ + timeOfTrust)) {
    return true;
  }
  connectedAt_ = now;
  if (isKnown && context_.sink->isConnected(wire_)) {
    return true;
  }
  dropAll();
  isAttached_ = place && connect(*place);
  return isAttached_;
}

bool Outlet::connect(PortAddress place) {
  if (!route_.from) {
    ownPort_ = context_.sink->makePort();
    if (!ownPort_) {
      leaveOut("the sequencer has no port left");
      return false;
    }
  }
  wire_ = {.from = ownPort_ ? *ownPort_ : *route_.from, .to = place, .isShared = route_.from.has_value()};
  const int failure = ownPort_ ? context_.sink->connect(wire_) : 0;
  if (failure < 0 && failure != -EINVAL) {  // That is a port which has just gone.
    leaveOut(snd_strerror(failure));
  }
  return failure == 0;
}

void Outlet::accept(snd_seq_event_t& event, TimePoint wanted, TimePoint now) {
  if (!isAttached_ || goesAtOnce(event, wanted, now) || !hasPlaceFor(event)) {
    return;
  }
  Waiting waiting{.event = event, .bytes = {}, .isLater = wanted > now, .due = std::nullopt};
  if (snd_seq_ev_is_variable(&event)) {
    const auto* bytes = static_cast<const unsigned char*>(event.data.ext.ptr);
    waiting.bytes.assign(bytes, bytes + event.data.ext.len);
    waiting.event.data.ext.ptr = waiting.bytes.data();  // Moving the list leaves its bytes where they are.
  }
  const bool wasTried = backlog_.empty() && blockedSince_;
  if (backlog_.empty() && !wasTried && go(wanted, waiting, now)) {
    return;
  }
  waitingBytes_ += sizeof(event) + waiting.bytes.size();
  const auto place = backlog_.emplace(wanted, std::move(waiting));
  if (place == backlog_.begin() && backlog_.size() > 1 && !blockedSince_) {
    wake_ = {};  // It goes before what was waited for.
  }
}

/// Nearly every event does: a short one that waits neither for its time nor for others. True if it is done
/// with.
bool Outlet::goesAtOnce(snd_seq_event_t& event, TimePoint wanted, TimePoint now) {
  return backlog_.empty() && wanted == now && !snd_seq_ev_is_variable(&event) &&
         transmit(event, std::nullopt, now);
}

/// Whole messages are taken or left out.
bool Outlet::hasPlaceFor(const snd_seq_event_t& event) {
  const bool isRest = continuesMessage(event);
  if (isRest && !takesRest_) {
    return false;
  }
  const std::size_t limit = backlogLimit + (isRest ? longestMessage : 0);
  const bool hasPlace = waitingBytes_ + sizeof(event) + bytesIn(event) <= limit;
  if (event.type == SND_SEQ_EVENT_SYSEX) {
    takesRest_ = hasPlace;
  }
  if (!hasPlace) {
    leaveOut("the other side doesn't read");
  }
  return hasPlace;
}

void Outlet::drain() {
  while (!backlog_.empty()) {
    const auto now = context_.runtime.clock().now();
    if (wake_ > now) {
      break;
    }
    auto node = backlog_.extract(backlog_.begin());
    const auto size = sizeof(snd_seq_event_t) + node.mapped().bytes.size();
    if (!go(node.key(), node.mapped(), now)) {
      backlog_.insert(backlog_.begin(), std::move(node));
      break;
    }
    waitingBytes_ -= std::min(waitingBytes_, size);
  }
  setTimer();
}

/// True if the event is done with; false if it must wait, until wake_.
bool Outlet::go(TimePoint wanted, Waiting& waiting, TimePoint now) {
  if (waiting.isLater && wanted - lead > now) {
    wake_ = wanted - lead;
    return false;
  }
  if (!waiting.due) {
    const auto rate = waiting.bytes.empty() ? std::nullopt : route_.sysExRate();
    waiting.due = rate ? pacer_.next(wanted, static_cast<std::int64_t>(waiting.bytes.size()), *rate) : wanted;
  }
  auto schedule = scheduleFor(waiting, now);
  if (!schedule && *waiting.due > now) {
    wake_ = *waiting.due;
    return false;
  }
  return transmit(waiting.event, std::move(schedule), now);
}

/// True if the event is done with; false if there is no room for it.
bool Outlet::transmit(snd_seq_event_t& event, std::optional<Schedule> schedule, TimePoint now) {
  if (now != attachedAt_ && route_.place() != wire_.to) {
    dropAll();
    return true;
  }
  const int result = context_.sink->send(event, wire_, {.now = now, .schedule = std::move(schedule)});
  if (hasNoRoom(result)) {
    return waitForRoom(now);
  }
  blockedSince_.reset();
  if (result == -ENOTCONN || result == -ENOENT) {
    dropAll();
  } else if (result < 0) {
    leaveOut(snd_strerror(result));
  } else {
    isLossTold_ = isLossTold_ && !backlog_.empty();
  }
  return true;
}

/// None for what goes at once, and where the kernel has no queue left: then the timer must do.
std::optional<Schedule> Outlet::scheduleFor(const Waiting& waiting, TimePoint now) {
  if (!waiting.isLater || *waiting.due <= now || *waiting.due > now + lead) {
    return std::nullopt;
  }
  if (kernelQueue_ == nullptr) {
    kernelQueue_ = context_.sink->queue();
  }
  scheduledUntil_ = std::max(scheduledUntil_, *waiting.due);
  return kernelQueue_ != nullptr ? std::optional(Schedule{kernelQueue_, *waiting.due - now}) : std::nullopt;
}

bool Outlet::waitForRoom(TimePoint now) {
  if (!blockedSince_) {
    blockedSince_ = now;
  }
  wake_ = now + std::clamp((now - *blockedSince_) / 8, shortestPause, longestPause);
  return false;
}

void Outlet::leaveOut(std::string_view reason) {
  if (!std::exchange(isLossTold_, true)) {
    karvex::foundation::log::debug("MIDI output is dropped: " + std::string(reason));
  }
}

void Outlet::dropAll() {
  if (ownPort_) {
    context_.sink->removePort(*std::exchange(ownPort_, std::nullopt));
  }
  encoder_.reset();
  backlog_.clear();
  waitingBytes_ = 0;
  takesRest_ = false;
  isAttached_ = false;
  blockedSince_.reset();
}

/// A timer that is set for an earlier moment is left: it sets itself anew.
void Outlet::setTimer() {
  if (backlog_.empty() && kernelQueue_ == nullptr) {
    return;
  }
  auto& clock = context_.runtime.clock();
  const auto now = clock.now();
  if (kernelQueue_ != nullptr && now >= scheduledUntil_ + linger) {
    kernelQueue_.reset();
  }
  TimePoint next = kernelQueue_ != nullptr ? scheduledUntil_ + linger : TimePoint::max();
  if (!backlog_.empty()) {
    next = std::min(next, wake_);
  }
  if (next >= timerAt_) {
    return;
  }
  timerAt_ = next;
  timer_ = karvex::foundation::Timer::oneShot(clock, *queue_, next - now, [weak = weak_from_this()] {
    if (const auto self = weak.lock()) {
      self->context_.gate->pass([&] {
        self->timerAt_ = TimePoint::max();
        self->drain();
      });
    }
  });
}

}  // namespace midikit::io::alsa
