#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "MIDIKitIO/platform/engine/DeviceDescription.hpp"
#include "MIDIKitIO/platform/engine/MIDIServiceEngine.hpp"
#include "foundation/run/Runtime.hpp"
#include "rig/midi/CountedMidiService.hpp"

namespace karvex::rig {

/// @name What describes simulated MIDI equipment and reads for it
/// @{
using midikit::io::engine::DeviceDescription;
using midikit::io::engine::EndpointDescription;
using midikit::io::engine::EntityDescription;
using midikit::io::engine::MIDIList;
using midikit::io::engine::MIDIReader;
using midikit::io::engine::simpleDevice;
using midikit::io::engine::ThruConnectionStore;
using midikit::io::engine::WordReader;
/// @}

/// The MIDI service of the rig, with equipment that is described rather than attached. All operations may be
/// called on any thread, the blocks that it runs included. The ledger counts the operations of MIDIService
/// and nothing else.
class VirtualMidiService final : public CountedMidiService {
 public:
  /// The runtime must outlive the service. Before platform version 11.0 the operations on protocols and event
  /// lists give `unknownError`. Services that are made with the same store, one after the other or
  /// together, share their persistent thru connections.
  explicit VirtualMidiService(
      foundation::Runtime& runtime, midikit::io::PlatformVersion version = {.major = 13, .minor = 0},
      std::shared_ptr<ThruConnectionStore> store = std::make_shared<ThruConnectionStore>());
  /// No block runs after this, unless it is a block that destroys the service. Lists and notifications that
  /// wait are dropped.
  ~VirtualMidiService() override;

  /// The names under which the clients were made, in that order.
  std::vector<std::string> clientNames() const;

  /// Attaches a device. Clients get `added` for the device, each entity, and each endpoint, parents first,
  /// and one `setupChanged` behind them.
  Ref addDevice(const DeviceDescription& description);
  /// Takes a device away. Clients get `removed` for all that goes, children first, and one `setupChanged`
  /// behind them. False if there is no such device.
  bool removeDevice(Ref device);
  /// Sets a property of the object and of all below it, as what concerns a whole device. Clients get
  /// `propertyChanged` for the object alone, and `setupChanged` behind it.
  OSStatus setPropertyThroughout(Ref object, std::string_view key, const midikit::io::PropertyValue& value);
  /// What comes to a device's destination goes to this block from now on, on a thread of the runtime.
  OSStatus readAsEquipment(Ref destination, MIDIReader reader);

  /// @name As in MIDIDriverHost
  /// @{
  OSStatus setProperty(Ref object, std::string_view key, midikit::io::PropertyValue value);
  OSStatus removeProperty(Ref object, std::string_view key);
  OSStatus answerWithNone(Ref object, std::string_view key);
  void notify(const midikit::io::MIDINotification& message);
  OSStatus sendFromEquipment(Ref source, const MIDIList& list);
  /// @}

 private:
  class Driver;
  struct Parts {
    std::shared_ptr<Driver> driver;
    std::shared_ptr<midikit::io::engine::MIDIServiceEngine> engine;
  };

  explicit VirtualMidiService(Parts parts);
  static Parts assemble(foundation::Runtime& runtime, midikit::io::PlatformVersion version,
                        std::shared_ptr<ThruConnectionStore> store);

  Parts parts_;
};

}  // namespace karvex::rig
