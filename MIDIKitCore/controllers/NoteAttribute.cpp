#include "MIDIKitCore/controllers/NoteAttribute.hpp"

namespace midikit::core {

std::string NoteAttribute::description() const {
  switch (kind_) {
    case Kind::manufacturerSpecific:
      return "manufacturerSpecific(" + std::to_string(data_) + ")";
    case Kind::profileSpecific:
      return "profileSpecific(" + std::to_string(data_) + ")";
    case Kind::pitch7_9:
      return Pitch7_9::fromEncoded(data_).description();
    case Kind::undefined:
      return "undefined(" + std::to_string(type_) + ", data: " + std::to_string(data_) + ")";
    case Kind::none:
      break;
  }
  return "none";
}

}  // namespace midikit::core
