#include "MIDIKitIO/receive/EventsBase.hpp"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "MIDIKitCore/filters/MIDIEventFilter.hpp"
#include "foundation/run/Queue.hpp"

namespace midikit::io::receive {
namespace {

using core::MIDIEvent;
using core::SysRealTimeType;
using karvex::foundation::Job;
using karvex::foundation::Queue;
using karvex::foundation::TimePoint;

/// The most events whose memory stays after a packet; what a rare long one needed is given back.
constexpr std::size_t keptEvents = 256;

/// A queue that may go before those who use it: what is posted then is dropped.
class WeakQueue final : public Queue {
 public:
  explicit WeakQueue(std::weak_ptr<Queue> target) : target_(std::move(target)) {}

  void post(Job job) override {
    if (const auto target = target_.lock()) {
      target->post(std::move(job));
    }
  }
  void postAt(TimePoint due, Job job) override {
    if (const auto target = target_.lock()) {
      target->postAt(due, std::move(job));
    }
  }

 private:
  std::weak_ptr<Queue> target_;
};

void empty(std::vector<MIDIEvent>& events) {
  if (events.capacity() > keptEvents) {
    std::vector<MIDIEvent>().swap(events);
  }
  events.clear();
}

bool isNoClockOrSensing(const MIDIEvent& event) {
  static const auto filter =
      core::SysRealTimeTypes::dropTypes({SysRealTimeType::timingClock, SysRealTimeType::activeSensing});
  return filter.passes(event);
}

}  // namespace

EventsBase::EventsBase(MIDIReceiverOptions options) : options_(options) {
  midi1Parser_.translateNoteOnZeroVelocityToNoteOff =
      options.contains(MIDIReceiverOptions::noteOnZeroAsNoteOff);
}

void EventsBase::adopt(const ReceiveContext& context) {
  if (!options_.contains(MIDIReceiverOptions::bundleParameterNumbers)) {
    midi2Parser_.emplace();
    return;
  }
  lateEvents_ = std::make_unique<WeakQueue>(context.eventQueue);
  advancedMIDI2Parser_.emplace(
      context.clock, *lateEvents_,
      [weak = weak_from_this()](std::span<const MIDIEvent> events, std::uint64_t timeStamp,
                                const MIDIPacketSource& source) {
        if (const auto self = weak.lock()) {
          self->handleWanted(events, timeStamp, source);
        }
      });
}

void EventsBase::packetsReceived(std::span<const AnyMIDIPacket> packets) {
  for (const auto& packet : packets) {
    read(packet, [this](auto bytes, auto& events) { midi1Parser_.parse(bytes, core::UInt4(), events); });
  }
}

void EventsBase::universalPacketsReceived(std::span<const AnyMIDIPacket> packets,
                                          core::MIDIProtocolVersion /*protocol*/) {
  for (const auto& packet : packets) {
    if (advancedMIDI2Parser_) {
      advancedMIDI2Parser_->parseEvents(packet.bytes(), packet.timeStamp(), packet.source());
    } else {
      read(packet, [this](auto bytes, auto& events) { midi2Parser_->parse(bytes, events); });
    }
  }
}

template <class Parse>
void EventsBase::read(const AnyMIDIPacket& packet, const Parse& parse) {
  parse(std::span<const std::uint8_t>(packet.bytes()), events_);
  handleWanted(events_, packet.timeStamp(), packet.source());
  empty(events_);
}

void EventsBase::handleWanted(std::span<const MIDIEvent> events, std::uint64_t timeStamp,
                              const MIDIPacketSource& source) {
  if (options_.contains(MIDIReceiverOptions::dropClockAndSensing)) {
    std::ranges::copy_if(events, std::back_inserter(wanted_), isNoClockOrSensing);
    events = wanted_;
  }
  if (!events.empty()) {
    handle(events, timeStamp, source);
  }
  empty(wanted_);
}

}  // namespace midikit::io::receive
