#pragma once

#include "MIDIKitCore/MIDIIOError.hpp"
#include "MIDIKitInternals/MIDIKitInternalError.hpp"

namespace midikit::io::internal {

/// Does `work` where there is nobody to report a failure to: both kinds of the layer's errors end here.
template <class Work>
void droppingErrors(const Work& work) noexcept {
  try {
    work();
  } catch (const core::MIDIIOError&) {
    return;
  } catch (const internals::MIDIKitInternalError&) {
    return;
  }
}

}  // namespace midikit::io::internal
