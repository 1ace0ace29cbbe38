#include "rig/midi/MidiReceiver.hpp"

#include <utility>

namespace karvex::rig {

using namespace midikit::io;

MidiReceiver::MidiReceiver(foundation::Runtime& runtime, foundation::Queue& queue, MidiReader reader)
    : queue_(queue), reader_(std::move(reader)), gate_(runtime) {}

void MidiReceiver::deliver(SharedMidiList list, std::shared_ptr<MidiConnection> connection) {
  queue_.post([self = shared_from_this(), list = std::move(list), connection = std::move(connection)] {
    if (connection->stands) {
      self->gate_.pass([&] { self->handOver(*list, connection->converter, connection->token); });
    }
  });
}

void MidiReceiver::deliver(SharedMidiList list, MIDIObjectRef sender) {
  queue_.post([self = shared_from_this(), list = std::move(list), sender] {
    self->gate_.pass([&] {
      ListConverter& converter = self->converters_[sender];
      self->handOver(*list, converter, nullptr);
      if (converter.isIdle()) {
        self->converters_.erase(sender);
      }
    });
  });
}

void MidiReceiver::handOver(const MidiList& list, ListConverter& converter, ConnectionToken token) {
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

}  // namespace karvex::rig
