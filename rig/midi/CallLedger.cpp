#include "rig/midi/CallLedger.hpp"

#include <algorithm>
#include <numeric>
#include <utility>

namespace karvex::rig {

using midikit::io::MIDIObjectRef;
using midikit::io::OSStatus;

std::uint64_t CallLedger::count(MIDIOperation operation) const {
  const std::lock_guard lock(mutex_);
  return counts_.at(static_cast<std::size_t>(operation));
}

std::uint64_t CallLedger::total() const {
  const std::lock_guard lock(mutex_);
  return std::accumulate(counts_.begin(), counts_.end(), std::uint64_t{0});
}

void CallLedger::resetCounts() {
  const std::lock_guard lock(mutex_);
  counts_.fill(0);
}

void CallLedger::failNext(MIDIOperation operation, OSStatus status, std::uint64_t times,
                          std::optional<MIDIObjectRef> object) {
  const std::lock_guard lock(mutex_);
  if (times > 0) {
    failures_.push_back({operation, status, times, object});
  }
}

void CallLedger::interruptNext(MIDIOperation operation, std::function<void()> action) {
  const std::lock_guard lock(mutex_);
  interruptions_[operation] = std::move(action);
}

void CallLedger::clearFailures() {
  const std::lock_guard lock(mutex_);
  failures_.clear();
}

std::optional<OSStatus> CallLedger::begin(MIDIOperation operation, MIDIObjectRef object) {
  std::unique_lock lock(mutex_);
  if (const auto interruption = interruptions_.extract(operation)) {
    lock.unlock();
    interruption.mapped()();
    lock.lock();
  }
  ++counts_.at(static_cast<std::size_t>(operation));
  const auto failure = std::find_if(failures_.begin(), failures_.end(), [&](const Failure& candidate) {
    return candidate.operation == operation && candidate.object.value_or(object) == object;
  });
  if (failure == failures_.end()) {
    return std::nullopt;
  }
  const OSStatus status = failure->status;
  if (--failure->times == 0) {
    failures_.erase(failure);
  }
  return status;
}

}  // namespace karvex::rig
