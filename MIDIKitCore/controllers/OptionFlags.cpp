#include "MIDIKitCore/controllers/OptionFlags.hpp"

namespace midikit::core {

std::string OptionFlags::description() const {
  std::string text;
  for (const OptionFlag flag : {OptionFlag::detachPerNoteControllers, OptionFlag::resetPerNoteControllers}) {
    if (contains(flag)) {
      text.append(text.empty() ? "" : ", ").append(core::description(flag));
    }
  }
  return "[" + text + "]";
}

}  // namespace midikit::core
