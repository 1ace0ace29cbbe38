#include "MIDIKitIO/platform/engine/ListReceiver.hpp"

#include <utility>

namespace midikit::io::engine {

ListReceiver::ListReceiver(karvex::foundation::Runtime& runtime, karvex::foundation::SerialQueue& queue,
                           MIDIReader reader, Manner manner)
    : queue_(queue), reader_(std::move(reader)), manner_(manner), gate_(runtime) {}

void ListReceiver::add(SharedMIDIList list, const std::shared_ptr<MIDIConnection>& connection) {
  connection->add(std::move(list));
  push({.connection = connection, .count = 1, .list = nullptr});
}

void ListReceiver::addWaiting(const std::shared_ptr<MIDIConnection>& connection) {
  push({.connection = connection, .count = connection->waiting(), .list = nullptr});
}

void ListReceiver::add(SharedMIDIList list, MIDIObjectRef sender) {
  push({.connection = nullptr, .count = 0, .list = std::move(list), .sender = sender});
}

void ListReceiver::push(Entry entry) {
  const std::lock_guard lock(mutex_);
  line_.push(std::move(entry));
}

/// Whoever has the queue's turn takes what has waited longest, so the order is that of the additions.
void ListReceiver::handOverNext(Thread thread) {
  const bool isHere = thread == Thread::callers || manner_ == Manner::neverWaits;
  if (!isHere || !queue_.runIfIdle([this] { takeNext(); })) {
    queue_.post([self = shared_from_this()] { self->takeNext(); });
  }
}

void ListReceiver::takeNext() {
  const Entry next = [this] {
    const std::lock_guard lock(mutex_);
    return line_.pop();
  }();
  if (next.connection != nullptr) {
    takeFrom(next);
    return;
  }
  gate_.pass([&] { read(viewOf(*next.list), next.sender); });
}

bool ListReceiver::readAtOnce(MIDIListView list, MIDIObjectRef sender) {
  return manner_ == Manner::neverWaits && queue_.runIfIdle([&] { gate_.pass([&] { read(list, sender); }); });
}

void ListReceiver::takeFrom(const Entry& entry) {
  for (std::size_t i = 0; i < entry.count; ++i) {
    gate_.pass([&] {
      if (const auto next = entry.connection->next()) {
        handOver(viewOf(*next->list), entry.connection->converter, next->token);
      }
    });
  }
}

void ListReceiver::read(MIDIListView list, MIDIObjectRef sender) {
  const auto inside = converters_.find(sender);
  if (inside == converters_.end()) {
    handOver(list, idle_, nullptr);
    if (!idle_.isIdle()) {
      converters_.emplace(sender, std::exchange(idle_, {}));
    }
    return;
  }
  handOver(list, inside->second, nullptr);
  if (inside->second.isIdle()) {
    idle_ = std::move(inside->second);  // for the memory that it has
    converters_.erase(inside);
  }
}

void ListReceiver::handOver(MIDIListView list, ListConverter& converter, ConnectionToken token) {
  if (const auto* words = std::get_if<WordReader>(&reader_)) {
    MIDIEventList room;
    const MIDIEventList& converted = converter.toWords(list, words->protocol, room);
    if (!converted.packets.empty() && words->block) {
      words->block(converted, token);
    }
  } else {
    MIDIPacketList room(0);
    const MIDIPacketList& converted = converter.toBytes(list, room);
    const auto& block = std::get<MIDIReadBlock>(reader_);
    if (converted.packetCount() > 0 && block) {
      block(converted, token);
    }
  }
}

}  // namespace midikit::io::engine
