#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "MIDIKitIO/platform/engine/MIDIRouting.hpp"
#include "MIDIKitIO/platform/engine/SetupEditor.hpp"
#include "MIDIKitIO/platform/linux/EquipmentTree.hpp"

namespace midikit::io::alsa {

/// Brings the setup to what is there, step by step, and knows which object is at which port. A device that
/// leaves stays in the setup and is "offline"; when it comes back it is the same object, with what has been
/// set on it meanwhile, whatever client it is then. Endpoints of other programs go with their ports. Not
/// locked.
class EquipmentModel {
 public:
  using Ref = MIDIObjectRef;

  /// So many devices that have left are remembered; the one that left first is forgotten for the next.
  static constexpr std::size_t mostOffline = 64;

  /// Makes who reads for a new destination.
  using MakeReceiver = std::function<engine::MIDIRouting::Receiver(Ref destination)>;

  explicit EquipmentModel(MakeReceiver makeReceiver) : makeReceiver_(std::move(makeReceiver)) {}

  /// What differs from the last time goes to the editor.
  void update(const Equipment& equipment, engine::SetupEditor& editor);

  /// A client, or one port of it, has gone: nobody is at that address, until an update finds who is. What has
  /// another identity then is another object.
  void leave(int client, std::optional<int> port);

  /// The source at that port, or 0.
  Ref sourceAt(PortAddress address) const;
  /// Where the endpoint is now; none if it is offline, or no equipment's.
  std::optional<PortAddress> addressOf(Ref endpoint) const;

 private:
  struct Entity {
    int port = 0;
    Ref ref = 0;
    Ref source = 0;
    Ref destination = 0;
    engine::EntityDescription description;
  };
  struct Device {
    Ref ref = 0;
    std::vector<std::string> keys;
    std::optional<int> client;  ///< none while it is offline
    std::uint64_t left = 0;     ///< when it left, in updates
    engine::DeviceDescription description;
    std::vector<Entity> entities;
  };
  struct Endpoint {
    Ref ref = 0;
    std::string identity;
    bool hasLeft = false;
    engine::EndpointDescription description;
  };
  using EndpointKey = std::pair<PortAddress, engine::MIDIObjectKind>;

  std::vector<std::optional<std::size_t>> match(const std::vector<DeviceRecord>& records) const;
  void updateDevice(Device& device, const DeviceRecord& record, engine::SetupEditor& editor);
  void addDevice(const DeviceRecord& record, engine::SetupEditor& editor);
  void updateEntities(Device& device, const DeviceRecord& record, engine::SetupEditor& editor);
  Entity adopt(int port, const engine::EntityDescription& description, Ref entity,
               engine::SetupEditor& editor) const;
  void takeOffline(Device& device, engine::SetupEditor& editor) const;
  void forgetOldest(engine::SetupEditor& editor);
  void updateEndpoints(const std::vector<EndpointRecord>& records, engine::SetupEditor& editor);
  void readAddresses();

  MakeReceiver makeReceiver_;
  std::uint64_t updates_ = 0;
  std::vector<Device> devices_;
  std::map<EndpointKey, Endpoint> endpoints_;
  std::map<PortAddress, Ref> sources_;
  std::map<Ref, PortAddress> addresses_;
};

}  // namespace midikit::io::alsa
