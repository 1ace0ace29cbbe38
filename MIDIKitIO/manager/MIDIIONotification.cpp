#include "MIDIKitIO/manager/MIDIIONotification.hpp"

#include "MIDIKitIO/objects/ObjectFor.hpp"
#include "MIDIKitIO/objects/SystemObjects.hpp"

namespace midikit::io {
namespace {

using Notification = MIDIIONotification;
using Raw = MIDIIORawNotification;

/// Looks up what the raw message names.
struct Lookup {
  const MIDIService& service;
  const MIDIIOObjectCache* cache;

  std::optional<Notification> operator()(const Raw::SetupChanged&) const {
    return Notification::setupChanged();
  }
  std::optional<Notification> operator()(const Raw::Added& raw) const {
    auto object = objectFor(service, raw.child, raw.childType);
    if (!object) {
      return std::nullopt;
    }
    return Notification::added(*std::move(object), objectFor(service, raw.parent, raw.parentType));
  }
  std::optional<Notification> operator()(const Raw::Removed& raw) const {
    auto object = objectFor(service, raw.child, raw.childType, cache);
    if (!object) {
      return std::nullopt;
    }
    return Notification::removed(*std::move(object), objectFor(service, raw.parent, raw.parentType, cache));
  }
  std::optional<Notification> operator()(const Raw::PropertyChanged& raw) const {
    const auto property = propertyForKey(raw.propertyName, service.platformVersion());
    auto object = property ? objectFor(service, raw.object, raw.objectType) : std::nullopt;
    if (!object) {
      return std::nullopt;
    }
    return Notification::propertyChanged(*property, *std::move(object));
  }
  std::optional<Notification> operator()(const Raw::ThruConnectionChanged&) const {
    return Notification::thruConnectionChanged();
  }
  std::optional<Notification> operator()(const Raw::SerialPortOwnerChanged&) const {
    return Notification::serialPortOwnerChanged();
  }
  std::optional<Notification> operator()(const Raw::IOError& raw) const {
    return Notification::ioError(makeDevice(service, raw.device), raw.error);
  }
  std::optional<Notification> operator()(const Raw::Other& raw) const {
    return Notification::other(raw.messageIDRawValue);
  }
};

struct Description {
  const MIDIService& service;

  std::string childText(const Notification::Child& child) const {
    const auto parent = child.parent ? ", parent: " + child.parent->debugText(service) : std::string();
    return child.object.debugText(service) + parent + ")";
  }
  std::string operator()(const Notification::SetupChanged&) const { return "setupChanged"; }
  std::string operator()(const Notification::Added& added) const { return "added(" + childText(added); }
  std::string operator()(const Notification::Removed& removed) const {
    return "removed(" + childText(removed);
  }
  std::string operator()(const Notification::PropertyChanged& changed) const {
    return "propertyChanged(" + changed.forObject.debugText(service) +
           ", for: " + std::string(traitsOf(changed.property).caseName) + ")";
  }
  std::string operator()(const Notification::ThruConnectionChanged&) const { return "thruConnectionChanged"; }
  std::string operator()(const Notification::SerialPortOwnerChanged&) const {
    return "serialPortOwnerChanged";
  }
  std::string operator()(const Notification::IOError& failed) const {
    return "ioError(device: " + failed.device.debugText(service) + ", error: " + failed.error.what() + ")";
  }
  std::string operator()(const Notification::Other& other) const {
    return "other(ID: " + std::to_string(other.messageIDRawValue) + ")";
  }
};

bool isSame(const AnyMIDIIOObject& a, const AnyMIDIIOObject& b) {
  return a.coreMIDIObjectRef() == b.coreMIDIObjectRef();
}

/// Whether the payloads of two notifications of one case are the same. Cases without one always are.
struct SamePayload {
  template <class Payload>
  bool operator()(const Payload&, const Payload&) const {
    return true;
  }
  static bool sameChild(const Notification::Child& a, const Notification::Child& b) {
    return isSame(a.object, b.object) && a.parent.has_value() == b.parent.has_value() &&
           (!a.parent || isSame(*a.parent, *b.parent));
  }
  bool operator()(const Notification::Added& a, const Notification::Added& b) const {
    return sameChild(a, b);
  }
  bool operator()(const Notification::Removed& a, const Notification::Removed& b) const {
    return sameChild(a, b);
  }
  bool operator()(const Notification::PropertyChanged& a, const Notification::PropertyChanged& b) const {
    return a.property == b.property && isSame(a.forObject, b.forObject);
  }
  bool operator()(const Notification::IOError& a, const Notification::IOError& b) const {
    return a.device == b.device && a.error == b.error;
  }
  bool operator()(const Notification::Other& a, const Notification::Other& b) const {
    return a.messageIDRawValue == b.messageIDRawValue;
  }
  template <class A, class B>
  bool operator()(const A&, const B&) const {
    return false;
  }
};

}  // namespace

std::optional<MIDIIONotification> MIDIIONotification::from(const MIDIIORawNotification& raw,
                                                           const MIDIService& service,
                                                           const MIDIIOObjectCache* cache) {
  return std::visit(Lookup{service, cache}, raw.asCase());
}

std::string MIDIIONotification::description(const MIDIService& service) const {
  return std::visit(Description{service}, case_);
}

bool operator==(const MIDIIONotification& a, const MIDIIONotification& b) {
  return std::visit(SamePayload(), a.case_, b.case_);
}

}  // namespace midikit::io
