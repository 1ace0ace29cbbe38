#include "MIDIKitIO/platform/engine/MIDIClients.hpp"

#include <utility>

#include "MIDIKitIO/platform/engine/BlockGate.hpp"

namespace midikit::io::engine {

/// What a queued notification holds on to, so that it may outlive the client.
struct MIDIClients::Listener {
  Listener(karvex::foundation::Runtime& runtime, MIDINotifyBlock itsBlock)
      : gate(runtime), block(std::move(itsBlock)) {}

  BlockGate gate;
  MIDINotifyBlock block;
};

void MIDIClients::add(MIDIObjectRef client, MIDINotifyBlock block) {
  auto& queue = runtime_.globalQueue();
  auto listener = std::make_shared<Listener>(runtime_, std::move(block));
  clients_.emplace(client, Client{std::move(listener), karvex::foundation::SerialQueue(queue),
                                  karvex::foundation::SerialQueue(queue)});
}

karvex::foundation::Queue* MIDIClients::receiveQueue(MIDIObjectRef client) {
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

void MIDIClients::close() {
  for (const auto& [ref, client] : clients_) {
    client.listener->gate.close();
  }
}

}  // namespace midikit::io::engine
