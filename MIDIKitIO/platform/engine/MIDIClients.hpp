#pragma once

#include <map>
#include <memory>
#include <vector>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "MIDIKitIO/platform/engine/BlockGate.hpp"
#include "foundation/run/Runtime.hpp"
#include "foundation/run/SerialQueue.hpp"

namespace midikit::io::engine {

/// The clients of a service, each with two serial queues on the runtime's threads: one for its notifications
/// and one for what its ports and virtual endpoints receive, so that neither holds the other up. Not locked;
/// notifying only queues, so it may be done under a lock.
class MIDIClients {
 public:
  /// The runtime must outlive the clients.
  explicit MIDIClients(karvex::foundation::Runtime& runtime) : runtime_(runtime) {}
  /// Returns the gate of the client's notifications.
  std::shared_ptr<BlockGate> add(MIDIObjectRef client, MIDINotifyBlock block);
  bool has(MIDIObjectRef client) const { return clients_.contains(client); }

  /// Where what this client receives is handed to it; null for no client.
  karvex::foundation::SerialQueue* receiveQueue(MIDIObjectRef client);

  /// Every client gets all the messages, in this order, in the order of the clients.
  void notify(const std::vector<MIDINotification>& messages);

  /// The gates of all notify blocks. Notifications that wait at a closed one are dropped.
  std::vector<std::shared_ptr<BlockGate>> gates() const;

 private:
  struct Listener;
  struct Client {
    std::shared_ptr<Listener> listener;
    karvex::foundation::SerialQueue notifications;
    karvex::foundation::SerialQueue lists;
  };

  karvex::foundation::Runtime& runtime_;
  std::map<MIDIObjectRef, Client> clients_;
};

}  // namespace midikit::io::engine
