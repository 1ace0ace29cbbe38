#pragma once

#include <string_view>

namespace midikit::io {

/// @name The keys of the properties, in the platform's spelling
/// @{
inline constexpr std::string_view kMIDIPropertyName = "name";
inline constexpr std::string_view kMIDIPropertyModel = "model";
inline constexpr std::string_view kMIDIPropertyManufacturer = "manufacturer";
inline constexpr std::string_view kMIDIPropertyUniqueID = "uniqueID";
inline constexpr std::string_view kMIDIPropertyDeviceID = "deviceID";
inline constexpr std::string_view kMIDIPropertySupportsMMC = "supports MMC";
inline constexpr std::string_view kMIDIPropertySupportsGeneralMIDI = "supports General MIDI";
inline constexpr std::string_view kMIDIPropertySupportsShowControl = "supports show control";
inline constexpr std::string_view kMIDIPropertyNameConfigurationDictionary = "nameConfigurationDictionary";
inline constexpr std::string_view kMIDIPropertyMaxSysExSpeed = "max SysEx speed";
inline constexpr std::string_view kMIDIPropertyDriverDeviceEditorApp = "driver device editor app";
inline constexpr std::string_view kMIDIPropertyImage = "image";
inline constexpr std::string_view kMIDIPropertyDisplayName = "displayName";
inline constexpr std::string_view kMIDIPropertyPanDisruptsStereo = "pan disrupts stereo";
inline constexpr std::string_view kMIDIPropertyProtocolID = "protocol";
inline constexpr std::string_view kMIDIPropertyTransmitsMTC = "transmits MTC";
inline constexpr std::string_view kMIDIPropertyReceivesMTC = "receives MTC";
inline constexpr std::string_view kMIDIPropertyTransmitsClock = "transmits clock";
inline constexpr std::string_view kMIDIPropertyReceivesClock = "receives clock";
inline constexpr std::string_view kMIDIPropertyAdvanceScheduleTimeMuSec = "scheduleAheadMuSec";
inline constexpr std::string_view kMIDIPropertyIsMixer = "is mixer";
inline constexpr std::string_view kMIDIPropertyIsSampler = "is sampler";
inline constexpr std::string_view kMIDIPropertyIsEffectUnit = "is effect unit";
inline constexpr std::string_view kMIDIPropertyIsDrumMachine = "is drum machine";
inline constexpr std::string_view kMIDIPropertyOffline = "offline";
inline constexpr std::string_view kMIDIPropertyPrivate = "private";
inline constexpr std::string_view kMIDIPropertyDriverOwner = "driver";
inline constexpr std::string_view kMIDIPropertyDriverVersion = "driver version";
inline constexpr std::string_view kMIDIPropertyCanRoute = "can route";
inline constexpr std::string_view kMIDIPropertyIsBroadcast = "broadcast";
inline constexpr std::string_view kMIDIPropertyConnectionUniqueID = "connUniqueID";
inline constexpr std::string_view kMIDIPropertyIsEmbeddedEntity = "embedded";
inline constexpr std::string_view kMIDIPropertySingleRealtimeEntity = "single realtime entity";
inline constexpr std::string_view kMIDIPropertyReceiveChannels = "receive channels";
inline constexpr std::string_view kMIDIPropertyTransmitChannels = "transmit channels";
inline constexpr std::string_view kMIDIPropertyMaxReceiveChannels = "max receive channels";
inline constexpr std::string_view kMIDIPropertyMaxTransmitChannels = "max transmit channels";
inline constexpr std::string_view kMIDIPropertyReceivesBankSelectLSB = "receives bank select LSB";
inline constexpr std::string_view kMIDIPropertyReceivesBankSelectMSB = "receives bank select MSB";
inline constexpr std::string_view kMIDIPropertyTransmitsBankSelectLSB = "transmits bank select LSB";
inline constexpr std::string_view kMIDIPropertyTransmitsBankSelectMSB = "transmits bank select MSB";
inline constexpr std::string_view kMIDIPropertyReceivesNotes = "receives notes";
inline constexpr std::string_view kMIDIPropertyTransmitsNotes = "transmits notes";
inline constexpr std::string_view kMIDIPropertyReceivesProgramChanges = "receives program changes";
inline constexpr std::string_view kMIDIPropertyTransmitsProgramChanges = "transmits program changes";
/// A USB device's serial number, which its driver writes beside the standard properties.
inline constexpr std::string_view serialNumberPropertyKey = "SerialNumber";
/// @}

}  // namespace midikit::io
