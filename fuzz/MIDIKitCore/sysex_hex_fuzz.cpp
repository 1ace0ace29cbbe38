// Feeds the reader of hexadecimal system exclusive text with any text.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "MIDIKitCore/SysExParser.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace midikit::core;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto event = parseSysEx7Hex(text);
  if (!event) {
    return 0;
  }
  // What was read must be the same when its bytes are read, or when they are spelt out.
  constexpr std::string_view digits = "0123456789abcdef";
  const auto bytes = event->midi1Bytes();
  std::string spelt;
  for (const auto byte : bytes) {
    spelt += digits[byte >> 4];
    spelt += '\n';
    spelt += digits[byte & 0xF];
  }
  const auto fromBytes = parseSysEx7(bytes);
  const auto fromText = parseSysEx7Hex(spelt);
  if (!fromBytes || *fromBytes != *event || !fromText || *fromText != *event) {
    std::abort();
  }
  return 0;
}
