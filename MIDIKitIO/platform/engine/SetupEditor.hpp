#pragma once

#include <string_view>
#include <vector>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"
#include "MIDIKitIO/platform/engine/DeviceDescription.hpp"
#include "MIDIKitIO/platform/engine/MIDIRouting.hpp"
#include "MIDIKitIO/platform/engine/MIDISetup.hpp"

namespace midikit::io::engine {

/// Several changes of a setup that belong together, and the messages about them: `added` for each object that
/// came, parents first, `removed` for each that went, children first, `propertyChanged`, all in the order of
/// the changes, and one `setupChanged` after them where objects came or went. Not locked.
class SetupEditor {
 public:
  using Ref = MIDIObjectRef;

  SetupEditor(MIDISetup& setup, MIDIRouting& routing) : setup_(setup), routing_(routing) {}

  const MIDISetup& setup() const { return setup_; }

  Ref addDevice(const DeviceDescription& description);
  /// An entity of a device that is there. `shared` is what the device and all below it have alike.
  Ref addEntity(Ref device, const EntityDescription& description, const PropertyDictionary& shared);
  /// An endpoint without entity that another program has made.
  Ref addForeignEndpoint(MIDIObjectKind kind, const EndpointDescription& description);
  /// Who reads for a destination that isn't one of this program's own.
  void setReader(Ref destination, MIDIRouting::Receiver reader);
  /// Takes the object and all below it away. Nothing happens if there is none.
  void remove(Ref object);

  /// Sets any property to any kind of value, as a driver does.
  OSStatus setProperty(Ref object, std::string_view key, const PropertyValue& value);
  /// The same for the object and all below it, as what concerns a whole device. The message is for the object
  /// alone, and a `setupChanged` follows all.
  OSStatus setPropertyThroughout(Ref object, std::string_view key, const PropertyValue& value);

  /// What is to be reported to clients.
  std::vector<MIDINotification> messages() const;
  /// Who read at what has gone; to be closed when no lock is held.
  const std::vector<MIDIRouting::Receiver>& removedReceivers() const { return removed_; }

 private:
  void tellAdded(Ref object);

  MIDISetup& setup_;
  MIDIRouting& routing_;
  std::vector<MIDINotification> messages_;
  std::vector<MIDIRouting::Receiver> removed_;
  bool isSetupChanged_ = false;
};

}  // namespace midikit::io::engine
