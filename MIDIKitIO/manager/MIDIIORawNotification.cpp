#include "MIDIKitIO/manager/MIDIIORawNotification.hpp"

namespace midikit::io {
namespace {

using Raw = MIDIIORawNotification;

template <class Payload>
Payload payloadOf(const MIDINotification& message) {
  const auto* payload = std::get_if<Payload>(&message.payload);
  return payload != nullptr ? *payload : Payload();
}

Raw::Child childOf(const MIDINotification& message) {
  const auto child = payloadOf<MIDINotification::Child>(message);
  return {child.parent, child.parentType, child.child, child.childType};
}

Raw::PropertyChanged propertyOf(const MIDINotification& message) {
  auto property = payloadOf<MIDINotification::Property>(message);
  return {property.object, property.objectType, std::move(property.propertyName)};
}

Raw::IOError errorOf(const MIDINotification& message) {
  const auto error = payloadOf<MIDINotification::IOError>(message);
  return {error.driverDevice, core::MIDIIOError::osStatus(error.errorCode)};
}

/// The numbers are the platform's, "kMIDIMsg...".
Raw::Case caseOf(const MIDINotification& message) {
  switch (message.messageID) {
    case 1:
      return Raw::SetupChanged();
    case 2:
      return Raw::Added{childOf(message)};
    case 3:
      return Raw::Removed{childOf(message)};
    case 4:
      return propertyOf(message);
    case 5:
      return Raw::ThruConnectionChanged();
    case 6:
      return Raw::SerialPortOwnerChanged();
    case 7:
      return errorOf(message);
    default:
      return Raw::Other{message.messageID};
  }
}

}  // namespace

MIDIIORawNotification::MIDIIORawNotification(const MIDINotification& message) : case_(caseOf(message)) {}

bool MIDIIORawNotification::concernsObjects() const {
  return std::holds_alternative<SetupChanged>(case_) || std::holds_alternative<Added>(case_) ||
         std::holds_alternative<Removed>(case_) || std::holds_alternative<PropertyChanged>(case_);
}

}  // namespace midikit::io
