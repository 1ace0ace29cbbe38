#include "MIDIKitIO/platform/engine/MIDIClients.hpp"

#include <utility>

namespace midikit::io::engine {

/// What a queued notification holds on to, so that it may outlive the client.
struct MIDIClients::Listener {
  Listener(karvex::foundation::Runtime& runtime, MIDINotifyBlock itsBlock)
      : gate(runtime), block(std::move(itsBlock)) {}

  BlockGate gate;
  MIDINotifyBlock block;
};

std::shared_ptr<BlockGate> MIDIClients::add(MIDIObjectRef client, MIDINotifyBlock block) {
  auto& queue = runtime_.globalQueue();
  auto listener = std::make_shared<Listener>(runtime_, std::move(block));
  std::shared_ptr<BlockGate> gate(listener, &listener->gate);
  clients_.emplace(client, Client{std::move(listener), karvex::foundation::SerialQueue(queue),
                                  karvex::foundation::SerialQueue(queue)});
  return gate;
}

karvex::foundation::SerialQueue* MIDIClients::receiveQueue(MIDIObjectRef client) {
  const auto found = clients_.find(client);
  return found != clients_.end() ? &found->second.lists : nullptr;
}

void MIDIClients::notify(const std::vector<MIDINotification>& messages) {
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

std::vector<std::shared_ptr<BlockGate>> MIDIClients::gates() const {
  std::vector<std::shared_ptr<BlockGate>> all;
  all.reserve(clients_.size());
  for (const auto& [ref, client] : clients_) {
    all.emplace_back(client.listener, &client.listener->gate);
  }
  return all;
}

}  // namespace midikit::io::engine
