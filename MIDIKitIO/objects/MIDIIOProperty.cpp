#include "MIDIKitIO/objects/MIDIIOProperty.hpp"

#include <algorithm>

namespace midikit::io {
namespace {

using enum MIDIIOPropertyForm;

/// In the order of MIDIIOProperty.
constexpr std::array<MIDIIOPropertyTraits, propertyCount> table = {{
    {"DEIO", text, kMIDIPropertyName, "name", "Name"},
    {"DEIO", text, kMIDIPropertyModel, "model", "Model"},
    {"DEIO", text, kMIDIPropertyManufacturer, "manufacturer", "Manufacturer"},
    {"DEIO", number, kMIDIPropertyUniqueID, "uniqueID", "Unique ID"},
    {"DE", number, kMIDIPropertyDeviceID, "deviceID", "Device ID"},
    {"DEIO", yesNo, kMIDIPropertySupportsMMC, "supportsMMC", "Supports MMC"},
    {"DEIO", yesNo, kMIDIPropertySupportsGeneralMIDI, "supportsGeneralMIDI", "Supports General MIDI"},
    {"DEIO", yesNo, kMIDIPropertySupportsShowControl, "supportsShowControl", "Supports Show Control"},
    {"D",
     dictionary,
     kMIDIPropertyNameConfigurationDictionary,
     "nameConfigurationDictionary",
     "Name Configuration Dictionary",
     {10, 15}},
    {"DEIO", number, kMIDIPropertyMaxSysExSpeed, "maxSysExSpeed", "Max SysEx Speed"},
    {"D", fileURL, kMIDIPropertyDriverDeviceEditorApp, "driverDeviceEditorApp", "Driver Device Editor App"},
    {"D", fileURL, kMIDIPropertyImage, "image", "Image (File URL)"},
    {"IO", text, kMIDIPropertyDisplayName, "displayName", "Display Name"},
    {"DE", yesNo, kMIDIPropertyPanDisruptsStereo, "panDisruptsStereo", "Pan Disrupts Stereo"},
    {"IO", protocol, kMIDIPropertyProtocolID, "protocolID", "Protocol ID", {11, 0}},
    {"DEIO", yesNo, kMIDIPropertyTransmitsMTC, "transmitsMTC", "Transmits MTC"},
    {"DEIO", yesNo, kMIDIPropertyReceivesMTC, "receivesMTC", "Receives MTC"},
    {"DEIO", yesNo, kMIDIPropertyTransmitsClock, "transmitsClock", "Transmits Clock"},
    {"DEIO", yesNo, kMIDIPropertyReceivesClock, "receivesClock", "Receives Clock"},
    {"DE", text, kMIDIPropertyAdvanceScheduleTimeMuSec, "advanceScheduleTimeMuSec",
     "Advance Schedule Time (μs)"},
    {"DE", yesNo, kMIDIPropertyIsMixer, "isMixer", "Is Mixer"},
    {"DE", yesNo, kMIDIPropertyIsSampler, "isSampler", "Is Sampler"},
    {"DE", yesNo, kMIDIPropertyIsEffectUnit, "isEffectUnit", "Is Effect Unit"},
    {"DE", yesNo, kMIDIPropertyIsDrumMachine, "isDrumMachine", "Is Drum Machine"},
    {"DEIO", yesNo, kMIDIPropertyOffline, "isOffline", "Is Offline"},
    {"IO", yesNo, kMIDIPropertyPrivate, "isPrivate", "Is Private"},
    {"DEIO", text, kMIDIPropertyDriverOwner, "driverOwner", "Driver Owner"},
    {"DEIO", number, kMIDIPropertyDriverVersion, "driverVersion", "Driver Version"},
    {"DE", yesNo, kMIDIPropertyCanRoute, "canRoute", "Can Route"},
    {"IO", yesNo, kMIDIPropertyIsBroadcast, "isBroadcast", "Is Broadcast"},
    {"IO", number, kMIDIPropertyConnectionUniqueID, "connectionUniqueID", "Connection Unique ID"},
    {"EIO", yesNo, kMIDIPropertyIsEmbeddedEntity, "isEmbeddedEntity", "Is Embedded Entity"},
    {"DIO", number, kMIDIPropertySingleRealtimeEntity, "singleRealtimeEntity", "Single Realtime Entity"},
    {"DEIO", bitMask, kMIDIPropertyReceiveChannels, "receiveChannels", "Receive Channels"},
    {"DEIO", bitMask, kMIDIPropertyTransmitChannels, "transmitChannels", "Transmit Channels"},
    {"D", number, kMIDIPropertyMaxReceiveChannels, "maxReceiveChannels", "Max Receive Channels"},
    {"D", number, kMIDIPropertyMaxTransmitChannels, "maxTransmitChannels", "Max Transmit Channels"},
    {"DE", yesNo, kMIDIPropertyReceivesBankSelectLSB, "receivesBankSelectLSB", "Receives Bank Select LSB"},
    {"DE", yesNo, kMIDIPropertyReceivesBankSelectMSB, "receivesBankSelectMSB", "Receives Bank Select MSB"},
    {"DE", yesNo, kMIDIPropertyTransmitsBankSelectLSB, "transmitsBankSelectLSB", "Transmits Bank Select LSB"},
    {"DE", yesNo, kMIDIPropertyTransmitsBankSelectMSB, "transmitsBankSelectMSB", "Transmits Bank Select MSB"},
    {"DE", yesNo, kMIDIPropertyReceivesNotes, "receivesNotes", "Receives Notes"},
    {"DE", yesNo, kMIDIPropertyTransmitsNotes, "transmitsNotes", "Transmits Notes"},
    {"DE", yesNo, kMIDIPropertyReceivesProgramChanges, "receivesProgramChanges", "Receives Program Changes"},
    {"DE", yesNo, kMIDIPropertyTransmitsProgramChanges, "transmitsProgramChanges",
     "Transmits Program Changes"},
}};

static_assert(table[static_cast<std::size_t>(MIDIIOProperty::protocolID)].form == protocol);
static_assert(table.back().caseName == "transmitsProgramChanges");

constexpr auto properties = [] {
  std::array<MIDIIOProperty, propertyCount> all{};
  for (std::size_t index = 0; index < propertyCount; ++index) {
    all[index] = static_cast<MIDIIOProperty>(index);
  }
  return all;
}();

}  // namespace

const MIDIIOPropertyTraits& traitsOf(MIDIIOProperty property) {
  return table.at(static_cast<std::size_t>(property));
}

const std::array<MIDIIOProperty, propertyCount>& allProperties() {
  return properties;
}

std::string_view platformKey(MIDIIOProperty property, PlatformVersion version) {
  const auto& traits = traitsOf(property);
  return version < traits.since ? std::string_view() : traits.platformKey;
}

std::optional<MIDIIOProperty> propertyForKey(std::string_view key, PlatformVersion version) {
  const auto* const found = std::find_if(properties.begin(), properties.end(), [&](MIDIIOProperty property) {
    return !key.empty() && platformKey(property, version) == key;
  });
  return found != properties.end() ? std::optional(*found) : std::nullopt;
}

}  // namespace midikit::io
