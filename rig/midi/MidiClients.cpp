#include "rig/midi/MidiClients.hpp"

#include <utility>

#include "rig/midi/BlockGate.hpp"

namespace karvex::rig {

using namespace midikit::io;

/// What a queued notification holds on to, so that it may outlive the client.
struct MidiClients::Listener {
  Listener(foundation::Runtime& runtime, MIDINotifyBlock itsBlock)
      : gate(runtime), block(std::move(itsBlock)) {}

  BlockGate gate;
  MIDINotifyBlock block;
};

void MidiClients::add(MIDIObjectRef client, const std::string& name, MIDINotifyBlock block) {
  auto& queue = runtime_.globalQueue();
  auto listener = std::make_shared<Listener>(runtime_, std::move(block));
  clients_.emplace(client, Client{name, std::move(listener), foundation::SerialQueue(queue),
                                  foundation::SerialQueue(queue)});
}

std::vector<std::string> MidiClients::names() const {
  std::vector<std::string> all;
  all.reserve(clients_.size());
  for (const auto& [ref, client] : clients_) {
    all.push_back(client.name);
  }
  return all;
}

foundation::Queue* MidiClients::receiveQueue(MIDIObjectRef client) {
  const auto found = clients_.find(client);
  return found != clients_.end() ? &found->second.lists : nullptr;
}

void MidiClients::notify(const std::vector<MIDINotification>& messages) {
  for (const auto& message : messages) {
    for (auto& [ref, client] : clients_) {
      client.notifications.post([listener = client.listener, message] {
        listener->gate.pass([&] {
          if (listener->block) {
            listener->block(message);
          }
        });
      });
    }
  }
}

void MidiClients::close() {
  for (const auto& [ref, client] : clients_) {
    client.listener->gate.close();
  }
}

}  // namespace karvex::rig
