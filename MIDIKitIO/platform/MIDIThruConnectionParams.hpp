#pragma once

#include <array>
#include <cstdint>

#include "MIDIKitIO/platform/MIDIServiceTypes.hpp"

namespace midikit::io {

/// One end of a thru connection: its handle, and the unique ID by which it is found again when the handle is
/// gone.
struct MIDIThruConnectionEndpoint {
  MIDIObjectRef endpointRef = 0;
  std::int32_t uniqueID = 0;
};

/// How one kind of value is changed on the way; 0 is not at all.
struct MIDITransform {
  std::uint16_t transform = 0;
  std::int16_t param = 0;
};

/// The platform's parameter record of a thru connection, in the platform's layout of 204 bytes. Control
/// transforms (8 bytes each) and maps (128 bytes each) would follow it; this layer sends none.
struct MIDIThruConnectionParams {
  static constexpr std::size_t maximumEndpoints = 8;

  std::uint32_t version = 0;
  std::uint32_t numSources = 0;
  std::array<MIDIThruConnectionEndpoint, maximumEndpoints> sources{};
  std::uint32_t numDestinations = 0;
  std::array<MIDIThruConnectionEndpoint, maximumEndpoints> destinations{};
  std::array<std::uint8_t, 16> channelMap{};
  std::uint8_t lowVelocity = 0;
  std::uint8_t highVelocity = 0;
  std::uint8_t lowNote = 0;
  std::uint8_t highNote = 127;
  MIDITransform noteNumber;
  MIDITransform velocity;
  MIDITransform keyPressure;
  MIDITransform channelPressure;
  MIDITransform programChange;
  MIDITransform pitchBend;
  std::uint8_t filterOutSysEx = 0;
  std::uint8_t filterOutMTC = 0;
  std::uint8_t filterOutBeatClock = 0;
  std::uint8_t filterOutTuneRequest = 0;
  std::array<std::uint8_t, 3> reserved2{};
  std::uint8_t filterOutAllControls = 0;
  std::uint16_t numControlTransforms = 0;
  std::uint16_t numMaps = 0;
  std::array<std::uint16_t, 4> reserved3{};
};
static_assert(sizeof(MIDIThruConnectionParams) == 204);

}  // namespace midikit::io
