#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "MIDIKitCore/MIDIIOError.hpp"
#include "MIDIKitIO/manager/MIDIIORawNotification.hpp"
#include "MIDIKitIO/objects/AnyMIDIIOObject.hpp"
#include "MIDIKitIO/objects/MIDIIOObjectCache.hpp"

namespace midikit::io {

/// A change of the MIDI setup, for the program. A plain value.
class MIDIIONotification {
 public:
  struct SetupChanged {};
  struct Child {
    AnyMIDIIOObject object;
    std::optional<AnyMIDIIOObject> parent;
  };
  struct Added : Child {};
  struct Removed : Child {};
  struct PropertyChanged {
    AnyMIDIIOObject::Property property;
    AnyMIDIIOObject forObject;
  };
  struct ThruConnectionChanged {};
  struct SerialPortOwnerChanged {};
  struct IOError {
    MIDIDevice device;
    core::MIDIIOError error;
  };
  struct Other {
    std::int32_t messageIDRawValue;
  };
  using Case = std::variant<SetupChanged, Added, Removed, PropertyChanged, ThruConnectionChanged,
                            SerialPortOwnerChanged, IOError, Other>;

  static MIDIIONotification setupChanged() { return Case(SetupChanged()); }
  static MIDIIONotification added(AnyMIDIIOObject object, std::optional<AnyMIDIIOObject> parent) {
    return Case(Added{{std::move(object), std::move(parent)}});
  }
  static MIDIIONotification removed(AnyMIDIIOObject object, std::optional<AnyMIDIIOObject> parent) {
    return Case(Removed{{std::move(object), std::move(parent)}});
  }
  static MIDIIONotification propertyChanged(AnyMIDIIOObject::Property property, AnyMIDIIOObject forObject) {
    return Case(PropertyChanged{property, std::move(forObject)});
  }
  static MIDIIONotification thruConnectionChanged() { return Case(ThruConnectionChanged()); }
  static MIDIIONotification serialPortOwnerChanged() { return Case(SerialPortOwnerChanged()); }
  static MIDIIONotification ioError(MIDIDevice device, const core::MIDIIOError& error) {
    return Case(IOError{std::move(device), error});
  }
  static MIDIIONotification other(std::int32_t messageIDRawValue) { return Case(Other{messageIDRawValue}); }

  /// What a raw message says, with its objects looked up on the platform, on the calling thread. Those that
  /// were removed are looked up in `cache` first. None for an object that can't be had, and for a property
  /// that this layer doesn't know.
  static std::optional<MIDIIONotification> from(const MIDIIORawNotification& raw, const MIDIService& service,
                                                const MIDIIOObjectCache* cache);

  /// Which it is, for `std::visit` or `std::get_if`.
  const Case& asCase() const { return case_; }

  /// "setupChanged", "added(" and the objects' debug texts, and so on.
  std::string description(const MIDIService& service) const;

  /// Same case and same payload, where objects are the same if their references are.
  friend bool operator==(const MIDIIONotification& a, const MIDIIONotification& b);

 private:
  MIDIIONotification(Case itsCase) : case_(std::move(itsCase)) {}

  Case case_;
};

}  // namespace midikit::io
