#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "MIDIKitIO/platform/engine/BlockGate.hpp"
#include "MIDIKitIO/platform/engine/MIDIDriverHost.hpp"
#include "MIDIKitIO/platform/linux/EquipmentModel.hpp"
#include "MIDIKitIO/platform/linux/EventCoder.hpp"
#include "MIDIKitIO/platform/linux/InputThreads.hpp"
#include "MIDIKitIO/platform/linux/Outlet.hpp"
#include "MIDIKitIO/platform/linux/OwnPorts.hpp"
#include "MIDIKitIO/platform/linux/Sequencer.hpp"
#include "foundation/run/Runtime.hpp"
#include "foundation/run/SerialQueue.hpp"
#include "foundation/run/Timer.hpp"

namespace midikit::io::alsa {

/// What goes on between a service and an open sequencer. What comes from the sequencer is handed on by
/// threads of the session's own (InputThreads). What goes out goes on the sender's thread; what must wait, on
/// a queue for each destination and each source. Any thread.
class SequencerSession {
 public:
  using Ref = MIDIObjectRef;

  /// Runtime and host must outlive the time until close().
  SequencerSession(karvex::foundation::Runtime& runtime, engine::MIDIDriverHost& host,
                   std::shared_ptr<Sequencer> sequencer);

  /// Looks at what is there, and follows it from then on. Once.
  void start();
  /// Nothing comes from the session when this returns.
  void close();

  /// The name under which other programs see this one.
  void setName(const std::string& name) { sequencer_->setName(readableText(name)); }

  /// @name This program's own endpoints; one call at a time
  /// @{
  void addEndpoint(Ref endpoint, engine::MIDIObjectKind kind);
  void removeEndpoint(Ref endpoint) { ownPorts_.remove(endpoint); }
  /// Its name, or whether others may see it, is another one.
  void refreshEndpoint(Ref endpoint, engine::MIDIObjectKind kind);
  /// @}

  /// What is listened to, and what the kernel connects, becomes what is wanted.
  void followRoutes();
  /// Whether the kernel hands on from one to the other without this program; MIDIDriver::connectsByItself.
  bool connectsByItself(Ref source, Ref destination) const;

 private:
  using Connection = std::pair<PortAddress, PortAddress>;

  /// Bytes that came from one port to another of this program, not yet handed on.
  struct Incoming {
    PortAddress from;
    int to = -1;
    std::vector<std::uint8_t> bytes;  ///< its memory serves again
  };

  InputThreads::Intake takeEvents();
  void takeEvent(const snd_seq_event_t* event, engine::Handovers& handovers);
  void takeNews(const snd_seq_event_t& event);
  void handOn(engine::Handovers& handovers);
  void lookSoon();
  void look();
  void followSources();
  void followConnections();

  OutletContext outputs() const { return {runtime_, sequencer_, outputGate_}; }
  void listenTo(Ref endpoint);
  engine::MIDIRouting::Receiver makeReceiver(Ref destination);
  std::optional<PortAddress> placeOf(Ref destination) const;
  std::optional<std::int64_t> sysExRateOf(Ref endpoint, int client) const;

  karvex::foundation::Runtime& runtime_;
  engine::MIDIDriverHost& host_;
  const std::shared_ptr<Sequencer> sequencer_;
  const std::shared_ptr<OutputGate> outputGate_ = std::make_shared<OutputGate>();
  karvex::foundation::SerialQueue queue_;
  std::shared_ptr<engine::BlockGate> gate_;  ///< around what runs on the queue; jobs hold on to it
  std::mutex turn_;  ///< what comes from the sequencer and looking at it take turns; of the next five
  EventDecoder decoder_;
  Incoming incoming_;
  karvex::foundation::Timer timer_;
  bool isLookDue_ = false;
  bool isLossTold_ = false;
  OwnPorts ownPorts_;
  std::mutex routesMutex_;            ///< one change of what is connected at a time; of the next
  std::set<Connection> connections_;  ///< that the kernel was asked for, while both ports are there
  mutable std::mutex mutex_;          ///< of all below; the host isn't called under it
  EquipmentModel model_;
  std::set<int> drivers_;         ///< the clients that are the kernel's
  std::set<int> echoes_;          ///< those of them that send back what comes to them
  std::set<PortAddress> heard_;   ///< the sources that this program listens to
  std::set<Connection> refused_;  ///< that the kernel won't make
  std::optional<InputThreads> input_;
};

}  // namespace midikit::io::alsa
