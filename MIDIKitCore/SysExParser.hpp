#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "MIDIKitCore/MIDIEvent.hpp"
#include "MIDIKitCore/ParseError.hpp"
#include "MIDIKitCore/numbers/UInt.hpp"
#include "MIDIKitInternals/Result.hpp"

namespace midikit::core {

// Turns one complete system exclusive message into its event. No bytes at all are `rawBytesEmpty`, but for
// text, in which they are `malformed` as whatever else is wrong; nothing is cut off or mended. Pure
// functions: any thread.

using SysExResult = internals::Result<MIDIEvent, ParseError>;

/// `rawBytes` is a whole message of a MIDI 1.0 byte stream: 0xF0, the body, and 0xF7, which may be missing.
/// A universal message of exactly five bytes - 0xF0, 0x7E or 0x7F, device ID and two sub-IDs - is malformed:
/// with nothing behind its second sub-ID it needs its 0xF7 to be whole.
SysExResult parseSysEx7(std::span<const std::uint8_t> rawBytes, UInt4 group = {});

/// The same from hexadecimal text, as in "F0 41 01 F7": two digits a byte, in either case, with white space
/// anywhere.
SysExResult parseSysEx7Hex(std::string_view text, UInt4 group = {});

/// `body` is the stream ID and behind it the message as Universal MIDI Packets send it.
SysExResult parseSysEx8(std::span<const std::uint8_t> body, UInt4 group = {});

// For whoever doesn't ask why there's no event: it's made behind what `into` holds, where it stays.

void appendSysEx7(std::span<const std::uint8_t> rawBytes, UInt4 group, std::vector<MIDIEvent>& into);
/// `body` is what stands between 0xF0 and 0xF7: all that a message of Universal MIDI Packets sends.
void appendSysEx7Body(std::span<const std::uint8_t> body, UInt4 group, std::vector<MIDIEvent>& into);
void appendSysEx8(std::span<const std::uint8_t> body, UInt4 group, std::vector<MIDIEvent>& into);

}  // namespace midikit::core
