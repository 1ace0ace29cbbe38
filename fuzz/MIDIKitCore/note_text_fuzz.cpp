// Feeds the reading of note texts with any bytes, in every style.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "MIDIKitCore/notes/MIDINote.hpp"

namespace {

using midikit::core::MIDINote;
using Style = MIDINote::Style;

void require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

/// Whatever was read must come back from each text that the note itself writes, and so must its name and
/// octave.
void requireRoundTrip(MIDINote note) {
  for (const bool isFlat : {false, true}) {
    for (const bool isUnicode : {false, true}) {
      const auto written = note.stringValue({.respellSharpAsFlat = isFlat, .unicodeAccidental = isUnicode});
      const auto again = MIDINote::fromText(written, note.style);
      require(again && *again == note);
    }
  }
  const auto named = MIDINote::fromName(note.name(), note.octave(), note.style);
  require(named && *named == note);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto yamaha = MIDINote::fromText(text, Style::yamaha);
  for (const Style style : {Style::yamaha, Style::roland, Style::cakewalk}) {
    const auto note = MIDINote::fromText(text, style);
    if (note) {
      require(note->style == style);
      requireRoundTrip(*note);
    } else {
      // Whether the name is malformed doesn't depend on the style.
      const bool isMalformed = note.error() == MIDINote::NoteError::malformedNoteName;
      require(isMalformed == (!yamaha && yamaha.error() == MIDINote::NoteError::malformedNoteName));
    }
    // The same text in a style whose octaves begin one later is a note twelve lower.
    if (note && yamaha) {
      require(note->distanceTo(*yamaha) == 12 * static_cast<int>(style));
    }
  }
  return 0;
}
