#include "MIDIKitCore/sysex/SysExEvents.hpp"

namespace midikit::core {

internals::Result<SysEx7, ParseError> SysEx7::make(SysExManufacturer manufacturer,
                                                   std::span<const std::uint8_t> data, UInt4 group) {
  auto body = SysEx7Data::exactly(data);
  if (!body) {
    return ParseError::malformed;
  }
  return SysEx7(manufacturer, *std::move(body), group);
}

internals::Result<UniversalSysEx7, ParseError> UniversalSysEx7::make(UniversalSysExType universalType,
                                                                     UInt7 deviceID, UInt7 subID1,
                                                                     UInt7 subID2,
                                                                     std::span<const std::uint8_t> data,
                                                                     UInt4 group) {
  auto body = SysEx7Data::exactly(data);
  if (!body) {
    return ParseError::malformed;
  }
  return UniversalSysEx7(universalType, deviceID, subID1, subID2, *std::move(body), group);
}

}  // namespace midikit::core
