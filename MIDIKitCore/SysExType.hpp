#pragma once

#include <cstdint>

namespace midikit::core {

/// The four kinds of system exclusive events, as filters name them.
enum class SysExType : std::uint8_t { sysEx7, universalSysEx7, sysEx8, universalSysEx8 };

}  // namespace midikit::core
