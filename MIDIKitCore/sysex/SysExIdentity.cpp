#include "MIDIKitCore/sysex/SysExIdentity.hpp"

#include <cstdint>
#include <vector>

namespace midikit::core {
namespace {

constexpr UInt7 generalInformation(0x06);
constexpr UInt7 identityRequestID(0x01);
constexpr UInt7 identityReplyID(0x02);

}  // namespace

UniversalSysEx7 identityRequest(UInt7 deviceID) {
  return {UniversalSysExType::nonRealTime, deviceID, generalInformation, identityRequestID, {}};
}

UniversalSysEx7 identityReply(UInt7 deviceID, const DeviceIdentity& identity) {
  const auto manufacturer = identity.manufacturer.bytes7();
  std::vector<std::uint8_t> data(manufacturer.begin(), manufacturer.end());
  for (const auto number : {identity.family.uint7Pair(), identity.model.uint7Pair()}) {
    data.push_back(number.lsb.value());
    data.push_back(number.msb.value());
  }
  for (const auto byte : identity.revision) {
    data.push_back(byte.value());
  }
  // Made of 7-bit values alone, so it can't be refused.
  return {UniversalSysExType::nonRealTime, deviceID, generalInformation, identityReplyID,
          *SysEx7Data::exactly(data)};
}

}  // namespace midikit::core
