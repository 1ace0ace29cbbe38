#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>

#include "MIDIKitCore/MIDIIOError.hpp"
#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"

namespace midikit::io {

/// A message of the platform about its setup, with nothing looked up.
class MIDIIORawNotification {
 public:
  struct SetupChanged {};
  struct Child {
    MIDIObjectRef parent = 0;
    std::int32_t parentType = -1;
    MIDIObjectRef child = 0;
    std::int32_t childType = -1;
  };
  struct Added : Child {};
  struct Removed : Child {};
  struct PropertyChanged {
    MIDIObjectRef object = 0;
    std::int32_t objectType = -1;
    std::string propertyName;
  };
  struct ThruConnectionChanged {};
  struct SerialPortOwnerChanged {};
  struct IOError {
    MIDIObjectRef device = 0;
    core::MIDIIOError error;
  };
  struct Other {
    std::int32_t messageIDRawValue = 0;
  };
  using Case = std::variant<SetupChanged, Added, Removed, PropertyChanged, ThruConnectionChanged,
                            SerialPortOwnerChanged, IOError, Other>;

  /// By the message's number: 1 to 7, every other number is `Other`. A payload that should be there and isn't
  /// counts as references of 0, which lead to no object.
  explicit MIDIIORawNotification(const MIDINotification& message);
  explicit MIDIIORawNotification(Case itsCase) : case_(std::move(itsCase)) {}

  /// Which it is, for `std::visit` or `std::get_if`.
  const Case& asCase() const { return case_; }

  /// Whether the lists of objects can be different now: objects were added or removed, a property or the
  /// whole setup changed.
  bool concernsObjects() const;

 private:
  Case case_;
};

}  // namespace midikit::io
