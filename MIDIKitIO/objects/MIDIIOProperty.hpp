#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "MIDIKitIO/objects/MIDIIOObjectType.hpp"
#include "MIDIKitIO/platform/MIDIPropertyKeys.hpp"
#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"

namespace midikit::io {

/// The properties that this layer knows, in the order in which they are listed.
enum class MIDIIOProperty : std::uint8_t {
  name,
  model,
  manufacturer,
  uniqueID,
  deviceID,
  supportsMMC,
  supportsGeneralMIDI,
  supportsShowControl,
  nameConfigurationDictionary,
  maxSysExSpeed,
  driverDeviceEditorApp,
  image,
  displayName,
  panDisruptsStereo,
  protocolID,
  transmitsMTC,
  receivesMTC,
  transmitsClock,
  receivesClock,
  advanceScheduleTimeMuSec,
  isMixer,
  isSampler,
  isEffectUnit,
  isDrumMachine,
  isOffline,
  isPrivate,
  driverOwner,
  driverVersion,
  canRoute,
  isBroadcast,
  connectionUniqueID,
  isEmbeddedEntity,
  singleRealtimeEntity,
  receiveChannels,
  transmitChannels,
  maxReceiveChannels,
  maxTransmitChannels,
  receivesBankSelectLSB,
  receivesBankSelectMSB,
  transmitsBankSelectLSB,
  transmitsBankSelectMSB,
  receivesNotes,
  transmitsNotes,
  receivesProgramChanges,
  transmitsProgramChanges,
};

inline constexpr std::size_t propertyCount =
    static_cast<std::size_t>(MIDIIOProperty::transmitsProgramChanges) + 1;

/// How the value of a property is read and written as text.
enum class MIDIIOPropertyForm : std::uint8_t { text, number, yesNo, bitMask, protocol, dictionary, fileURL };

/// What there is to know of a property.
struct MIDIIOPropertyTraits {
  /// The object types that can have it, a letter each: D device, E entity, I input, O output endpoint.
  std::string_view kinds;
  MIDIIOPropertyForm form;
  std::string_view platformKey;
  std::string_view caseName;
  std::string_view label;
  /// The platform's first version that has it.
  PlatformVersion since = {};

  constexpr bool appliesTo(MIDIIOObjectType type) const {
    constexpr std::string_view letters = "DEIO";
    return kinds.find(letters[static_cast<std::size_t>(type)]) != std::string_view::npos;
  }
};

/// The traits of the property.
const MIDIIOPropertyTraits& traitsOf(MIDIIOProperty property);

/// All properties, in order.
const std::array<MIDIIOProperty, propertyCount>& allProperties();

/// The key of the property on that platform; empty on platforms that are too old to have it.
std::string_view platformKey(MIDIIOProperty property, PlatformVersion version);

/// The property that has that key on that platform; none for a name that no property has.
std::optional<MIDIIOProperty> propertyForKey(std::string_view key, PlatformVersion version);

}  // namespace midikit::io
