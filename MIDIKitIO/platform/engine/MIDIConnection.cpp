#include "MIDIKitIO/platform/engine/MIDIConnection.hpp"

#include <utility>

namespace midikit::io::engine {

namespace {

std::size_t sizeOf(const MIDIList& list) {
  std::size_t size = sizeof(MIDIList);
  if (const auto* bytes = std::get_if<MIDIPacketList>(&list)) {
    for (std::size_t i = 0; i < bytes->packetCount(); ++i) {
      size += MIDIPacketList::packetHeaderSize + bytes->packet(i).bytes.size();
    }
  } else {
    size += std::get<MIDIEventList>(list).packets.size() * sizeof(MIDIEventPacket);
  }
  return size;
}

}  // namespace

void MIDIConnection::add(SharedMIDIList list) {
  const std::lock_guard lock(mutex_);
  if (state_ == State::held) {
    held_ += sizeOf(*list);
    if (held_ > mostHeld) {
      state_ = State::ended;
      waiting_.clear();
    }
  }
  if (state_ != State::ended) {
    waiting_.push_back(std::move(list));
  }
}

void MIDIConnection::hold(TimePoint until) {
  const std::lock_guard lock(mutex_);
  state_ = State::held;
  endsAt_ = until;
  held_ = 0;
}

bool MIDIConnection::resume(ConnectionToken token) {
  const std::lock_guard lock(mutex_);
  if (state_ == State::ended) {
    return false;
  }
  state_ = State::inUse;
  token_ = token;
  return true;
}

void MIDIConnection::end() {
  const std::lock_guard lock(mutex_);
  state_ = State::ended;
  waiting_.clear();
}

std::optional<MIDIConnection::TimePoint> MIDIConnection::endsAt() const {
  const std::lock_guard lock(mutex_);
  return state_ == State::inUse ? std::nullopt : std::optional(endsAt_);
}

std::optional<MIDIConnection::Delivery> MIDIConnection::next() {
  const std::lock_guard lock(mutex_);
  if (state_ != State::inUse || waiting_.empty()) {
    return std::nullopt;
  }
  Delivery delivery{std::move(waiting_.front()), token_};
  waiting_.pop_front();
  return delivery;
}

std::size_t MIDIConnection::waiting() const {
  const std::lock_guard lock(mutex_);
  return waiting_.size();
}

}  // namespace midikit::io::engine
