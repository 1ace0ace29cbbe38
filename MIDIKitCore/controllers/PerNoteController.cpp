#include "MIDIKitCore/controllers/PerNoteController.hpp"

#include "MIDIKitCore/controllers/Controller.hpp"

namespace midikit::core {

std::string PerNoteController::Registered::description() const {
  if (!isPlain()) {
    return "Undefined Per-Note CC" + std::to_string(number_);
  }
  // The others have the meaning, and the number, of a channel's controller.
  return *this == Registered(pitch7_25) ? "Pitch 7.25" : Controller(UInt7(number_)).description();
}

std::string PerNoteController::description() const {
  return (kind_ == Kind::registered ? "registered(" : "assignable(") + std::to_string(number_) + ")";
}

}  // namespace midikit::core
