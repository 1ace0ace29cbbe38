#include "MIDIKitIO/platform/engine/ThruParameters.hpp"

#include <cstring>
#include <numeric>

#include "MIDIKitIO/platform/engine/UmpMessages.hpp"

namespace midikit::io::engine {

namespace {

/// The parameters as they would be without endpoints and filters.
MIDIThruConnectionParams withoutEndpointsAndFilters(MIDIThruConnectionParams parameters) {
  parameters.numSources = 0;
  parameters.sources = {};
  parameters.numDestinations = 0;
  parameters.destinations = {};
  parameters.filterOutSysEx = 0;
  parameters.filterOutMTC = 0;
  parameters.filterOutBeatClock = 0;
  parameters.filterOutTuneRequest = 0;
  parameters.filterOutAllControls = 0;
  return parameters;
}

bool holdsBackSystem(std::uint32_t status, const MIDIThruConnectionParams& parameters) {
  switch (status) {
    case 0xF1:
      return parameters.filterOutMTC != 0;
    case 0xF6:
      return parameters.filterOutTuneRequest != 0;
    case 0xF8:
    case 0xFA:
    case 0xFB:
    case 0xFC:
      return parameters.filterOutBeatClock != 0;
    default:
      return false;
  }
}

/// Control change, and what it is in the MIDI 2.0 protocol: the messages for registered and
/// assignable controllers, absolute and relative.
bool isControl(std::uint32_t opcode, bool isMidi2) {
  return opcode == 0xB || (isMidi2 && opcode >= 0x2 && opcode <= 0x5);
}

/// By the first word alone (Universal MIDI Packet specification).
bool holdsBack(std::uint32_t word, const MIDIThruConnectionParams& parameters) {
  const std::uint32_t status = word >> 16U & 0xFFU;
  switch (core::umpMessageType(word)) {
    case 0x1:
      return holdsBackSystem(status, parameters);
    case 0x2:
    case 0x4:
      return parameters.filterOutAllControls != 0 &&
             isControl(status >> 4U, core::umpMessageType(word) == 0x4);
    case 0x3:
    case 0x5:
      return parameters.filterOutSysEx != 0;
    default:
      return false;
  }
}

}  // namespace

MIDIThruConnectionParams usualThruParameters() {
  MIDIThruConnectionParams parameters;
  std::iota(parameters.channelMap.begin(), parameters.channelMap.end(), std::uint8_t{0});
  return parameters;
}

std::optional<MIDIThruConnectionParams> readThruParameters(std::span<const std::uint8_t> bytes) {
  if (bytes.size() != sizeof(MIDIThruConnectionParams)) {  // Transforms and maps would follow.
    return std::nullopt;
  }
  MIDIThruConnectionParams parameters;
  std::memcpy(&parameters, bytes.data(), sizeof(parameters));
  if (parameters.numSources > MIDIThruConnectionParams::maximumEndpoints ||
      parameters.numDestinations > MIDIThruConnectionParams::maximumEndpoints) {
    return std::nullopt;
  }
  const auto usual = usualThruParameters();
  const auto rest = withoutEndpointsAndFilters(parameters);
  const bool isUsual = std::memcmp(&rest, &usual, sizeof(usual)) == 0;  // The record has no padding.
  return isUsual ? std::optional(parameters) : std::nullopt;
}

bool filtersAnything(const MIDIThruConnectionParams& parameters) {
  return parameters.filterOutSysEx != 0 || parameters.filterOutMTC != 0 ||
         parameters.filterOutBeatClock != 0 || parameters.filterOutTuneRequest != 0 ||
         parameters.filterOutAllControls != 0;
}

MIDIEventList filtered(const MIDIEventList& list, const MIDIThruConnectionParams& parameters) {
  MIDIEventList left{.protocol = list.protocol};
  for (const auto& packet : list.packets) {
    const auto finished = left.packets.size();
    forEachMessage(packet, [&](auto message) {
      if (!holdsBack(message.front(), parameters)) {
        appendMessage(left, packet.timeStamp, message, finished);
      }
    });
  }
  return left;
}

}  // namespace midikit::io::engine
