#pragma once

#include <memory>

#include "MIDIKitIO/platform/MIDIService.hpp"
#include "foundation/run/Runtime.hpp"

namespace midikit::io {

/// The MIDI service of a Linux machine, on ALSA's sequencer. Where there is no sequencer, or it may not be
/// opened, one log line says why, and the service knows no equipment until that changes; everything inside of
/// the program works. The runtime must outlive the service.
/// Thread-safe: yes.
/// Realtime-safe: no, it allocates and opens files.
std::shared_ptr<MIDIService> makeAlsaMIDIService(karvex::foundation::Runtime& runtime);

}  // namespace midikit::io
