#include "MIDIKitIO/platform/engine/ListReceiver.hpp"

#include <utility>

namespace midikit::io::engine {

ListReceiver::ListReceiver(karvex::foundation::Runtime& runtime, karvex::foundation::Queue& queue,
                           MIDIReader reader)
    : queue_(queue), reader_(std::move(reader)), gate_(runtime) {}

void ListReceiver::deliver(SharedMIDIList list, const std::shared_ptr<MIDIConnection>& connection) {
  connection->add(std::move(list));
  takeFrom(connection, 1);  // The sources of one port keep the order in which their lists came.
}

void ListReceiver::catchUp(const std::shared_ptr<MIDIConnection>& connection) {
  if (const auto waiting = connection->waiting(); waiting > 0) {
    takeFrom(connection, waiting);
  }
}

void ListReceiver::takeFrom(const std::shared_ptr<MIDIConnection>& connection, std::size_t most) {
  queue_.post([self = shared_from_this(), connection, most] {
    for (std::size_t i = 0; i < most; ++i) {
      self->gate_.pass([&] {
        if (const auto next = connection->next()) {
          self->handOver(*next->list, connection->converter, next->token);
        }
      });
    }
  });
}

void ListReceiver::deliver(SharedMIDIList list, MIDIObjectRef sender) {
  queue_.post([self = shared_from_this(), list = std::move(list), sender] {
    self->gate_.pass([&] {
      ListConverter& converter = self->converterFor(sender);
      self->handOver(*list, converter, nullptr);
      if (converter.isIdle()) {
        self->spare_ = self->converters_.extract(sender);
      }
    });
  });
}

ListConverter& ListReceiver::converterFor(MIDIObjectRef sender) {
  const auto found = converters_.find(sender);
  if (found != converters_.end() || spare_.empty()) {
    return converters_[sender];
  }
  spare_.key() = sender;
  return converters_.insert(std::move(spare_)).position->second;
}

void ListReceiver::handOver(const MIDIList& list, ListConverter& converter, ConnectionToken token) {
  if (const auto* words = std::get_if<WordReader>(&reader_)) {
    const MIDIEventList converted = converter.toWords(list, words->protocol);
    if (!converted.packets.empty() && words->block) {
      words->block(converted, token);
    }
  } else {
    const MIDIPacketList converted = converter.toBytes(list);
    const auto& block = std::get<MIDIReadBlock>(reader_);
    if (converted.packetCount() > 0 && block) {
      block(converted, token);
    }
  }
}

}  // namespace midikit::io::engine
