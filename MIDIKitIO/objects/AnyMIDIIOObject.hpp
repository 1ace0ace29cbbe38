#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "MIDIKitIO/objects/MIDIDevice.hpp"
#include "MIDIKitIO/objects/MIDIEndpoint.hpp"
#include "MIDIKitIO/objects/MIDIEntity.hpp"
#include "MIDIKitIO/objects/MIDIIOProperty.hpp"

namespace midikit::io {

/// An object of any kind, with its record.
class AnyMIDIIOObject {
 public:
  using Property = MIDIIOProperty;
  /// In the order of MIDIIOObjectType.
  using Case = std::variant<MIDIDevice, MIDIEntity, MIDIInputEndpoint, MIDIOutputEndpoint>;

  AnyMIDIIOObject(MIDIDevice device) : case_(std::move(device)) {}
  AnyMIDIIOObject(MIDIEntity entity) : case_(std::move(entity)) {}
  AnyMIDIIOObject(MIDIInputEndpoint endpoint) : case_(std::move(endpoint)) {}
  AnyMIDIIOObject(MIDIOutputEndpoint endpoint) : case_(std::move(endpoint)) {}
  AnyMIDIIOObject(const AnyMIDIEndpoint& endpoint);

  /// The record, for `std::visit` or `std::get_if`.
  const Case& asCase() const { return case_; }

  /// @name What all records have
  /// @{
  MIDIIOObjectType objectType() const { return static_cast<MIDIIOObjectType>(case_.index()); }
  const std::string& name() const;
  std::int32_t uniqueID() const;
  MIDIObjectRef coreMIDIObjectRef() const;
  /// As io::propertyText.
  std::string propertyText(const MIDIService& service, Property property) const;
  /// As io::properties.
  std::vector<std::pair<std::string_view, std::string>> properties(const MIDIService& service,
                                                                   bool onlyRelevant = false) const;
  /// The record's own.
  std::string debugText(const MIDIService& service) const;
  /// @}

 private:
  Case case_;
};

/// What describes an object of the platform: the records and AnyMIDIIOObject.
template <class T>
concept MIDIIOObject = std::convertible_to<T, AnyMIDIIOObject> &&
                       requires(const T& object, const MIDIService& service, MIDIIOProperty property) {
                         { object.propertyText(service, property) } -> std::same_as<std::string>;
                         object.properties(service, true);
                       };
static_assert(MIDIIOObject<MIDIDevice> && MIDIIOObject<MIDIEntity> && MIDIIOObject<MIDIInputEndpoint> &&
              MIDIIOObject<MIDIOutputEndpoint> && MIDIIOObject<AnyMIDIEndpoint> &&
              MIDIIOObject<AnyMIDIIOObject>);

/// What is both an object of the platform's and an endpoint.
template <class T>
concept MIDIIOEndpointProtocol = MIDIIOObject<T> && MIDIEndpoint<T>;
static_assert(MIDIIOEndpointProtocol<MIDIInputEndpoint> && MIDIIOEndpointProtocol<MIDIOutputEndpoint> &&
              MIDIIOEndpointProtocol<AnyMIDIEndpoint>);

}  // namespace midikit::io
